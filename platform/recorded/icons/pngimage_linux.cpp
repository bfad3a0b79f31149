#include <png.h>

#include <algorithm>
#include <vector>

#include "platform/recorded/icons/iconimage.h"

namespace roundup {

namespace {

constexpr std::uint64_t kSignatureSize = 8;
// Chunk types in file order. Of the others the platform's icons take no notice, above all not of a gamma.
constexpr std::uint32_t kKeptChunks[] = {
    0x52444849U,  // IHDR
    0x45544C50U,  // PLTE
    0x534E5274U,  // tRNS
    0x54414449U,  // IDAT
    0x444E4549U,  // IEND
};

std::uint32_t BigEndian(std::uint32_t number) noexcept {
    return number << 24 | (number & 0xFF00) << 8 | (number >> 8 & 0xFF00) | number >> 24;
}

// The file with nothing but the chunks that make the picture; up to where it breaks off.
std::vector<std::byte> PictureChunks(ByteView block) {
    std::vector<std::byte> kept;
    const auto append = [&](ByteView part) { kept.insert(kept.end(), part.Bytes().begin(), part.Bytes().end()); };
    if (const auto signature = block.Slice(0, kSignatureSize)) append(*signature);
    for (std::uint64_t at = kSignatureSize; block.Holds(at, 8);) {
        const std::uint32_t length = BigEndian(*block.At<std::uint32_t>(at));
        const auto chunk = block.Slice(at, std::uint64_t{length} + 12);  // length, type, bytes, checksum
        if (!chunk) break;
        if (std::ranges::count(kKeptChunks, *chunk->At<std::uint32_t>(4)) > 0) append(*chunk);
        at += chunk->Size();
    }
    return kept;
}

bool ReadPixels(png_image& reader, IconImage& image) {
    // Sixteen bits a channel are no icon's.
    if ((reader.format & PNG_FORMAT_FLAG_LINEAR) != 0) return false;
    if (reader.width == 0 || reader.width > kLargestIconSide) return false;
    if (reader.height == 0 || reader.height > kLargestIconSide) return false;
    const bool hasAlpha = (reader.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.width = reader.width;
    image.height = reader.height;
    image.color.resize(std::size_t{reader.width} * reader.height);
    image.mask.resize(image.color.size());
    reader.format = PNG_FORMAT_BGRA;  // in memory order: a little-endian 0xAARRGGBB
    if (png_image_finish_read(&reader, nullptr, image.color.data(), 0, nullptr) == 0) return false;
    if (!hasAlpha) {
        for (std::uint32_t& color : image.color) color &= 0xFFFFFF;
    }
    return true;
}

}  // namespace

std::optional<IconImage> DecodePngImage(ByteView block) {
    const std::vector<std::byte> picture = PictureChunks(block);
    png_image reader = {};
    reader.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&reader, picture.data(), picture.size()) == 0) return std::nullopt;
    IconImage image;
    const bool read = ReadPixels(reader, image);
    png_image_free(&reader);
    if (!read) return std::nullopt;
    return image;
}

}  // namespace roundup
