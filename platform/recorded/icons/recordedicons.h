// The icon operations of the shell on a machine that is not live.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/filesystem.h"
#include "platform/recorded/handletable.h"
#include "platform/recorded/icons/iconimage.h"
#include "platform/registry.h"
#include "platform/shell.h"

namespace roundup {

// Icons come from the resources of programs and from .ico files, chosen and sized as the platform does it. The
// operations are those of IShell of the same names; every thread may call.
class RecordedIcons {
  public:
    RecordedIcons(IFileSystem& files, IRegistry& registry) noexcept : m_files(files), m_registry(registry) {}

    void ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small);
    // The icon of a program or an .ico file is its first; of any other file the one that the registry names for its
    // type, else the shell's own picture of a document, a program or a folder, where the source has the shell.
    IconHandle GetFileIcon(const char16_t* path);
    void DestroyIcon(IconHandle icon) { m_icons.Take(icon); }
    bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps);
    bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape);
    // 32 bits of a colour bitmap or 1 bit of a mask: what the bitmap holds.
    bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size);
    void DeleteBitmap(BitmapHandle bitmap) { m_bitmaps.Take(bitmap); }

  private:
    struct Bitmap {
        BitmapShape shape;
        std::vector<std::byte> rows;  // bottom line first, each rounded up to 4 bytes
    };

    class Source;

    IconHandle AddIcon(std::optional<IconImage> image);
    IconHandle LargeIcon(const char16_t* path, std::int32_t index);

    IFileSystem& m_files;
    IRegistry& m_registry;
    HandleTable<IconImage> m_icons;
    HandleTable<Bitmap> m_bitmaps;
};

}  // namespace roundup
