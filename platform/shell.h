// What the shell and the graphics layer answer: special folders, command lines, icons, indirect texts, shell links.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace roundup {

// Icons and bitmaps are owned by whoever received them and destroyed once. 0 is none.
using IconHandle = std::uint64_t;
using BitmapHandle = std::uint64_t;

// BITMAP of wingdi.h, as far as it is needed.
struct BitmapShape {
    std::int32_t width = 0;   // pixels
    std::int32_t height = 0;  // pixels
    std::uint16_t planes = 0;
    std::uint16_t bitsPerPixel = 0;
};

// BITMAPINFOHEADER of wingdi.h, byte for byte: 40 bytes on disk and in memory.
struct BitmapHeader {
    std::uint32_t size = 40;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t planes = 0;
    std::uint16_t bitCount = 0;
    std::uint32_t compression = 0;
    std::uint32_t sizeImage = 0;
    std::int32_t xPelsPerMeter = 0;
    std::int32_t yPelsPerMeter = 0;
    std::uint32_t clrUsed = 0;
    std::uint32_t clrImportant = 0;
};
static_assert(sizeof(BitmapHeader) == 40);

struct IconBitmaps {
    BitmapHandle mask = 0;
    BitmapHandle color = 0;
};

// What the shell's link object tells of a .lnk file. A text that could not be had is empty.
struct ShellLink {
    std::u16string path;  // GetPath with SLGP_SHORTPATH
    std::u16string workingDirectory;
    std::u16string description;
    std::u16string arguments;
    std::u16string iconPath;
    std::int32_t iconIndex = 0;
    std::uint16_t hotkey = 0;
    std::int32_t showCommand = 1;
};

class IShell {
  public:
    IShell() = default;
    IShell(const IShell&) = delete;
    IShell& operator=(const IShell&) = delete;
    virtual ~IShell() = default;

    // SHGetFolderPathW and SHGetSpecialFolderPathW (no creation) for a CSIDL number, without flags. False, and path
    // untouched, for a number that has no folder here.
    virtual bool GetFolderPath(std::uint32_t number, char16_t (&path)[260]) = 0;
    virtual bool GetSpecialFolderPath(std::uint32_t number, char16_t (&path)[260]) = 0;
    // SHGetFolderPathW with SHGFP_TYPE_DEFAULT: where the folder is until somebody moves it. A machine that does not
    // tell the two apart answers the folder as it is.
    virtual bool GetDefaultFolderPath(std::uint32_t number, char16_t (&path)[260]) {
        return GetFolderPath(number, path);
    }

    // CommandLineToArgvW. An empty text gives the path of the host's executable, as the platform does. False when
    // the platform fails.
    virtual bool SplitCommandLine(const char16_t* text, std::vector<std::u16string>& arguments) = 0;

    // ExtractIconExW for one large (32 pixels) and one small (16 pixels) icon at the index (negative: by resource
    // number). Both are 0 when there is none.
    virtual void ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) = 0;
    // SHGetFileInfoW with SHGFI_ICON | SHGFI_DISPLAYNAME (768): the icon that the shell shows for the path; 0 if none.
    virtual IconHandle GetFileIcon(const char16_t* path) = 0;
    virtual void DestroyIcon(IconHandle icon) = 0;

    // GetIconInfo: copies of the icon's bitmaps, to be deleted by the caller. color is 0 for a black and white icon,
    // whose mask then holds both halves.
    virtual bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) = 0;
    // GetObjectW of a bitmap.
    virtual bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) = 0;
    // GetDIBits of all lines in the form that header asks for (positive height: bottom line first; 32, or 1 bit per
    // pixel; rows rounded up to 4 bytes). bits has room for size bytes, at least those of the image.
    virtual bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) = 0;
    virtual void DeleteBitmap(BitmapHandle bitmap) = 0;

    // SHLoadIndirectString: the text that source ("@..." form) names, at most size characters with the terminator.
    virtual bool LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) = 0;

    // Loads a .lnk file through the shell's link object. False when it cannot be loaded.
    virtual bool ReadLink(const char16_t* path, ShellLink& link) = 0;

    // CoInitialize and CoUninitialize for the calling thread, in pairs.
    virtual void EnterApartment() = 0;
    virtual void LeaveApartment() = 0;
};

}  // namespace roundup
