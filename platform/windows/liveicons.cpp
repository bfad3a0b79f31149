#include "platform/windows/liveicons.h"

#include <cstring>

// The order matters: windows.h comes first.
// clang-format off
#include "platform/windows/winhandle.h"
#include <shellapi.h>
// clang-format on

namespace roundup {

namespace {

template <class Handle>
Handle FromSeam(std::uint64_t handle) noexcept {
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(handle));
}
std::uint64_t ToSeam(const void* handle) noexcept { return reinterpret_cast<std::uintptr_t>(handle); }

struct DevicePolicy {
    using Type = HDC;
    static Type None() noexcept { return nullptr; }
    static void Close(Type device) noexcept { ::DeleteDC(device); }
};
using OwnedDevice = WinHandle<DevicePolicy>;

// The icon at the index in the size that the two system metrics give; null when there is none.
HICON ExtractOne(const char16_t* path, std::int32_t index, int width, int height) {
    HICON icon = nullptr;
    UINT resource = 0;
    ::PrivateExtractIconsW(ToWide(path), index, ::GetSystemMetrics(width), ::GetSystemMetrics(height), &icon, &resource,
                           1, LR_DEFAULTCOLOR);
    return icon;
}

// A header with room for the palette that the platform writes behind it for 8 bits per pixel and below.
struct HeaderWithPalette {
    BITMAPINFOHEADER header;
    RGBQUAD palette[256];
};

}  // namespace

void LiveIcons::ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) {
    HICON first = nullptr;
    HICON second = nullptr;
    // Wine takes -1 for the question of how many icons there are, also when it is asked for some, and may answer with a
    // handle that is none.
    if (index == -1) {
        first = ExtractOne(path, index, SM_CXICON, SM_CYICON);
        second = ExtractOne(path, index, SM_CXSMICON, SM_CYSMICON);
    } else {
        // Where there is no icon Wine leaves in both whatever its memory held.
        const UINT count = ::ExtractIconExW(ToWide(path), index, &first, &second, 1);
        if (count == 0 || count == UINT_MAX) first = second = nullptr;
    }
    large = ToSeam(first);
    small = ToSeam(second);
}

IconHandle LiveIcons::GetFileIcon(const char16_t* path) {
    SHFILEINFOW info{};
    if (::SHGetFileInfoW(ToWide(path), 0, &info, sizeof(info), SHGFI_ICON | SHGFI_DISPLAYNAME) == 0) return 0;
    // Wine's list of images redraws what it is given; the icon of a file that has one itself is its first.
    if (const HICON own = IsWine() ? ExtractOne(path, 0, SM_CXICON, SM_CYICON) : nullptr) {
        ::DestroyIcon(info.hIcon);
        return ToSeam(own);
    }
    return ToSeam(info.hIcon);
}

void LiveIcons::DestroyIcon(IconHandle icon) { ::DestroyIcon(FromSeam<HICON>(icon)); }

bool LiveIcons::GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) {
    ICONINFO info{};
    if (!::GetIconInfo(FromSeam<HICON>(icon), &info)) return false;
    bitmaps.mask = ToSeam(info.hbmMask);
    bitmaps.color = ToSeam(info.hbmColor);
    return true;
}

bool LiveIcons::GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) {
    BITMAP found{};
    if (::GetObjectW(FromSeam<HBITMAP>(bitmap), sizeof(found), &found) == 0) return false;
    shape.width = found.bmWidth;
    shape.height = found.bmHeight;
    shape.planes = found.bmPlanes;
    shape.bitsPerPixel = found.bmBitsPixel;
    return true;
}

bool LiveIcons::GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) {
    if (header.width <= 0 || header.height <= 0) return false;
    const auto lines = static_cast<std::uint32_t>(header.height);
    const std::uint64_t line =
        (std::uint64_t{header.bitCount} * static_cast<std::uint32_t>(header.width) + 31) / 32 * 4;
    // The platform is not told how much room there is.
    if (line * lines > size) return false;
    HeaderWithPalette info{};
    static_assert(sizeof(info.header) == sizeof(header));
    std::memcpy(&info.header, &header, sizeof(header));
    const OwnedDevice device(::CreateCompatibleDC(nullptr));
    if (!device) return false;
    return ::GetDIBits(device.Get(), FromSeam<HBITMAP>(bitmap), 0, lines, bits, reinterpret_cast<BITMAPINFO*>(&info),
                       DIB_RGB_COLORS) == header.height;
}

void LiveIcons::DeleteBitmap(BitmapHandle bitmap) { ::DeleteObject(FromSeam<HBITMAP>(bitmap)); }

}  // namespace roundup
