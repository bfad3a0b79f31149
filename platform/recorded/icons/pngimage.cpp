#include <algorithm>
#include <vector>

#include "platform/pngpixels.h"
#include "platform/recorded/icons/iconimage.h"

namespace roundup {

namespace {

constexpr std::uint64_t kSignatureSize = 8;
constexpr std::uint32_t kTransparency = 0x534E5274U;  // tRNS, in file order
// Of other chunks than these the platform's icons take no notice, above all not of a gamma.
constexpr std::uint32_t kKeptChunks[] = {
    0x52444849U,  // IHDR
    0x45544C50U,  // PLTE
    kTransparency,
    0x54414449U,  // IDAT
    0x444E4549U,  // IEND
};
// Of the header: width and height, each big-endian, bits of a channel, and the kind of color, in which bit 2 is alpha.
constexpr std::uint64_t kWidthAt = 16;
constexpr std::uint64_t kHeightAt = 20;
constexpr std::uint64_t kDepthAt = 24;
constexpr std::uint64_t kColorAt = 25;
constexpr std::uint8_t kHasAlpha = 4;

std::uint32_t BigEndian(std::uint32_t number) noexcept {
    return number << 24 | (number & 0xFF00) << 8 | (number >> 8 & 0xFF00) | number >> 24;
}

struct Picture {
    std::vector<std::byte> file;  // with nothing but the chunks that make the picture; up to where it breaks off
    bool hasAlpha = false;
};

Picture PictureOf(ByteView block) {
    Picture picture;
    const auto append = [&](ByteView part) {
        picture.file.insert(picture.file.end(), part.Bytes().begin(), part.Bytes().end());
    };
    if (const auto signature = block.Slice(0, kSignatureSize)) append(*signature);
    for (std::uint64_t at = kSignatureSize; block.Holds(at, 8);) {
        const std::uint32_t length = BigEndian(*block.At<std::uint32_t>(at));
        const auto chunk = block.Slice(at, std::uint64_t{length} + 12);  // length, type, bytes, checksum
        if (!chunk) break;
        const std::uint32_t type = *chunk->At<std::uint32_t>(4);
        if (std::ranges::count(kKeptChunks, type) > 0) append(*chunk);
        if (type == kTransparency) picture.hasAlpha = true;
        at += chunk->Size();
    }
    return picture;
}

}  // namespace

std::optional<IconImage> DecodePngImage(ByteView block) {
    Picture picture = PictureOf(block);
    const ByteView file(picture.file);
    const auto color = file.At<std::uint8_t>(kColorAt);
    // Sixteen bits a channel are no icon's.
    if (!color || *file.At<std::uint8_t>(kDepthAt) > 8) return std::nullopt;
    picture.hasAlpha = picture.hasAlpha || (*color & kHasAlpha) != 0;
    IconImage image;
    image.width = BigEndian(*file.At<std::uint32_t>(kWidthAt));
    image.height = BigEndian(*file.At<std::uint32_t>(kHeightAt));
    if (image.width == 0 || image.width > kLargestIconSide) return std::nullopt;
    if (image.height == 0 || image.height > kLargestIconSide) return std::nullopt;
    image.color.resize(std::size_t{image.width} * image.height);
    image.mask.resize(image.color.size());
    if (!ReadPngPixels(file.Bytes(), image.width, image.height, image.color.data())) return std::nullopt;
    if (!picture.hasAlpha) {
        for (std::uint32_t& pixel : image.color) pixel &= 0xFFFFFF;
    }
    return image;
}

}  // namespace roundup
