#include "utility/icon2mem.h"

#include <cstring>
#include <new>

#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/kvobject.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

namespace {

// The .ico format (ICONDIR, ICONDIRENTRY): 6 bytes of header, 16 bytes for each image, then the images.
constexpr std::size_t kDirectorySize = 6;
constexpr std::size_t kEntrySize = 16;
constexpr std::uint32_t kImageAt = kDirectorySize + kEntrySize;

// Icons go up to 256 pixels a side. What claims to be much larger is broken or hostile.
constexpr std::int32_t kLargestSide = 1024;
// Bytes of a .ico file that is taken whole.
constexpr std::uint64_t kLargestIconFile = 0x1000000;

IShell& Shell() { return CurrentMachine().Shell(); }

struct Icon {
    Icon() = default;
    Icon(const Icon&) = delete;
    Icon& operator=(const Icon&) = delete;
    ~Icon() {
        if (handle != 0) Shell().DestroyIcon(handle);
    }
    IconHandle handle = 0;
};

struct Bitmaps {
    Bitmaps() = default;
    Bitmaps(const Bitmaps&) = delete;
    Bitmaps& operator=(const Bitmaps&) = delete;
    ~Bitmaps() {
        if (handles.mask != 0) Shell().DeleteBitmap(handles.mask);
        if (handles.color != 0) Shell().DeleteBitmap(handles.color);
    }
    IconBitmaps handles;
};

// The bytes that a header takes with its colours or channel masks.
constexpr std::uint32_t HeaderBytes(const BitmapHeader& header) noexcept {
    std::uint32_t bytes = header.size;
    if (header.bitCount < 9) bytes += 4 * (header.clrUsed != 0 ? header.clrUsed : 1U << header.bitCount);
    if ((header.compression & 3) == 3) bytes += 12;  // BI_BITFIELDS and what has its bits set
    return bytes;
}

// The header of the bitmap's image at that depth.
ResultCode MakeHeader(BitmapHandle bitmap, std::uint16_t bitCount, BitmapHeader& header) {
    BitmapShape shape;
    if (!Shell().GetBitmapShape(bitmap, shape)) return Fail(SmallCode::GeneralFailure);
    const bool sound =
        shape.width > 0 && shape.width <= kLargestSide && shape.height > 0 && shape.height <= kLargestSide;
    if (!sound) return Fail(SmallCode::BadData);
    header.width = shape.width;
    header.height = shape.height;
    header.planes = 1;  // the depth asked for is that of one plane, whatever the bitmap's own layout is
    header.bitCount = bitCount;
    const std::uint32_t row = (static_cast<std::uint32_t>(shape.width) * bitCount + 31) / 32 * 4;
    header.sizeImage = row * static_cast<std::uint32_t>(shape.height);
    return kSuccess;
}

// One image as it is laid out: the colour header, the colour lines and the mask lines.
struct Image {
    BitmapHeader color;
    BitmapHeader mask;

    std::uint32_t ColorHeaderBytes() const noexcept { return HeaderBytes(color); }
    std::uint32_t Bytes() const noexcept { return ColorHeaderBytes() + color.sizeImage + mask.sizeImage; }
};

template <class T>
void Put(std::byte* target, T value) noexcept {
    std::memcpy(target, &value, sizeof value);
}

void WriteDirectory(const Image& image, std::byte* out) noexcept {
    Put<std::uint16_t>(out, 0);
    Put<std::uint16_t>(out + 2, 1);
    Put<std::uint16_t>(out + 4, 1);
    std::byte* entry = out + kDirectorySize;
    std::memset(entry, 0, kEntrySize);
    entry[0] = static_cast<std::byte>(image.color.width);
    entry[1] = static_cast<std::byte>(image.color.height);
    // Readers take the depth from the image itself; these two bytes are what hosts have been given all along.
    Put(entry + 2, static_cast<std::uint16_t>(image.color.planes * image.color.bitCount));
    Put(entry + 8, image.Bytes());
    Put(entry + 12, kImageAt);
}

ResultCode WriteImage(const IconBitmaps& bitmaps, const Image& image, std::byte* out) {
    // The platform wants lines on 4-byte borders, which the place in the file is not.
    const std::size_t lines = std::size_t{image.color.sizeImage} + image.mask.sizeImage;
    const std::unique_ptr<std::uint32_t[]> bits(new (std::nothrow) std::uint32_t[lines / 4]);
    if (bits == nullptr) return Fail(SmallCode::ObjectAllocation);
    std::uint32_t* maskBits = bits.get() + image.color.sizeImage / 4;
    if (!Shell().GetBitmapBits(bitmaps.color, image.color, bits.get(), image.color.sizeImage)) {
        return Fail(SmallCode::GeneralFailure);
    }
    if (!Shell().GetBitmapBits(bitmaps.mask, image.mask, maskBits, image.mask.sizeImage)) {
        return Fail(SmallCode::GeneralFailure);
    }
    BitmapHeader header = image.color;
    header.height *= 2;  // colour and mask count together
    std::memcpy(out, &header, sizeof header);
    std::memcpy(out + image.ColorHeaderBytes(), bits.get(), lines);
    return kSuccess;
}

ResultCode WriteIcon(IconHandle icon, std::byte* buffer, std::uint32_t& size) {
    Bitmaps bitmaps;
    if (!Shell().GetIconBitmaps(icon, bitmaps.handles)) return Fail(SmallCode::GeneralFailure);
    Image image;
    if (auto rc = MakeHeader(bitmaps.handles.color, 32, image.color); Failed(rc)) return Pass(rc);
    if (auto rc = MakeHeader(bitmaps.handles.mask, 1, image.mask); Failed(rc)) return Pass(rc);
    const std::uint32_t total = image.Bytes() + kImageAt;
    if (buffer == nullptr) {
        size = total;
        return kSuccess;
    }
    if (size < total) return Fail(SmallCode::GeneralFailure, size);
    WriteDirectory(image, buffer);
    if (auto rc = WriteImage(bitmaps.handles, image, buffer + kImageAt); Failed(rc)) return Pass(rc);
    size = total;
    return kSuccess;
}

bool ReadIconFile(const char16_t* path, std::unique_ptr<std::byte[]>& bytes, std::uint32_t& size) {
    const std::uint64_t length = GetFileSize64(path);
    if (length == 0 || length > kLargestIconFile) return false;
    const auto file = RefPtr<IProbeIO>::Adopt(CurrentMachine().ClosedLibraries().GetProbeIO());
    if (!file || file->Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting) == -1) return false;
    std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[length]);
    if (block == nullptr) return false;
    std::uint32_t done = 0;
    if (file->Read(0, block.get(), static_cast<std::uint32_t>(length), &done) != 0 || done == 0 || done > length) {
        return false;
    }
    bytes = std::move(block);
    size = done;
    return true;
}

bool ConvertIcon(IconHandle icon, std::unique_ptr<std::byte[]>& bytes, std::uint32_t& size) {
    std::uint32_t length = 0;
    if (!IconToMemory(icon, nullptr, length)) return false;
    std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[length]);
    if (block == nullptr || !IconToMemory(icon, block.get(), length)) return false;
    bytes = std::move(block);
    size = length;
    return true;
}

bool ExtractIcon(const char16_t* path, std::int32_t index, std::unique_ptr<std::byte[]>& bytes, std::uint32_t& size) {
    Icon large;
    Icon small;
    Icon shown;
    Shell().ExtractIcons(path, index, large.handle, small.handle);
    IconHandle icon = large.handle != 0 ? large.handle : small.handle;
    if (icon == 0) icon = shown.handle = Shell().GetFileIcon(path);
    return icon != 0 && ConvertIcon(icon, bytes, size);
}

}  // namespace

bool LoadIconBytes(const char16_t* path, std::int32_t index, std::unique_ptr<std::byte[]>& bytes, std::uint32_t& size) {
    bytes.reset();
    size = 0;
    if (path == nullptr || path[0] == u'\0') return false;
    if (EndsWithNoCase(path, u".ico")) return ReadIconFile(path, bytes, size);
    return ExtractIcon(path, index, bytes, size);
}

bool IconToMemory(IconHandle icon, std::byte* buffer, std::uint32_t& size) {
    return Succeeded(WriteIcon(icon, buffer, size));
}

}  // namespace roundup
