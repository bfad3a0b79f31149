// The icon operations of the live machine's shell.
#pragma once

#include "platform/shell.h"

namespace roundup {

// An IconHandle is an HICON, a BitmapHandle an HBITMAP. Every thread may call.
class LiveIcons : public IShell {
  public:
    void ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) override;
    IconHandle GetFileIcon(const char16_t* path) override;
    void DestroyIcon(IconHandle icon) override;
    bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) override;
    bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) override;
    bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) override;
    void DeleteBitmap(BitmapHandle bitmap) override;
};

}  // namespace roundup
