#include "platform/recorded/icons/iconimage.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace roundup {

namespace {

constexpr std::uint32_t kUncompressed = 0;  // BI_RGB
constexpr std::uint32_t kBitFields = 3;     // BI_BITFIELDS
constexpr std::uint32_t kPngStart = 0x474E5089U;

// A bitmap as it stands in the block, every part checked against it.
struct Dib {
    std::uint32_t width = 0;
    std::uint32_t height = 0;  // of the image; the block's header counts image and mask
    std::uint32_t bits = 0;
    std::vector<std::uint32_t> palette;
    std::uint32_t masks[3] = {0xFF0000, 0xFF00, 0xFF};
    ByteView colors;
    ByteView mask;  // empty when the block has none

    std::size_t ColorStride() const noexcept { return std::size_t{(width * bits + 31) / 32} * 4; }
    std::size_t MaskStride() const noexcept { return std::size_t{(width + 31) / 32} * 4; }
};

bool ReadHeader(ByteView block, Dib& dib, std::uint64_t& position) {
    const auto headerSize = block.At<std::uint32_t>(0);
    const auto width = block.At<std::int32_t>(4);
    const auto height = block.At<std::int32_t>(8);
    const auto bits = block.At<std::uint16_t>(14);
    const auto compression = block.At<std::uint32_t>(16);
    const auto used = block.At<std::uint32_t>(32);
    if (!used || *headerSize < 40 || !block.Holds(0, *headerSize)) return false;
    if (*width <= 0 || *height <= 1 || *width > static_cast<std::int32_t>(kLargestIconSide)) return false;
    if (*height > static_cast<std::int32_t>(2 * kLargestIconSide)) return false;
    dib.width = static_cast<std::uint32_t>(*width);
    dib.height = static_cast<std::uint32_t>(*height) / 2;
    dib.bits = *bits;
    position = *headerSize;
    if (dib.bits == 16) dib.masks[0] = 0x7C00, dib.masks[1] = 0x3E0, dib.masks[2] = 0x1F;
    if (*compression == kBitFields && (dib.bits == 16 || dib.bits == 32)) {
        for (std::uint64_t i = 0; i < 3; ++i) {
            const auto mask = block.At<std::uint32_t>(40 + 4 * i);
            if (!mask) return false;
            dib.masks[i] = *mask;
        }
        // The newer headers hold the masks; behind the oldest they follow.
        if (*headerSize == 40) position += 12;
    } else if (*compression != kUncompressed) {
        return false;
    }
    if (dib.bits > 8) return dib.bits == 16 || dib.bits == 24 || dib.bits == 32;
    if (dib.bits != 1 && dib.bits != 4 && dib.bits != 8) return false;
    const std::uint32_t most = 1U << dib.bits;
    dib.palette.resize(*used == 0 || *used > most ? most : *used);
    return true;
}

bool ReadDib(ByteView block, Dib& dib) {
    std::uint64_t position = 0;
    if (!ReadHeader(block, dib, position)) return false;
    for (std::uint32_t& color : dib.palette) {
        const auto entry = block.At<std::uint32_t>(position);
        if (!entry) return false;
        color = *entry & 0xFFFFFF;
        position += 4;
    }
    const std::uint64_t colorSize = std::uint64_t{dib.ColorStride()} * dib.height;
    const auto colors = block.Slice(position, colorSize);
    if (!colors) return false;
    dib.colors = *colors;
    // Images with alpha are seen without a mask now and then: nothing of them is masked then.
    dib.mask = block.Slice(position + colorSize, std::uint64_t{dib.MaskStride()} * dib.height).value_or(ByteView());
    return dib.mask.Size() > 0 || dib.bits == 32;
}

// The part of a pixel under a mask, widened to 8 bits.
std::uint32_t Channel(std::uint32_t pixel, std::uint32_t mask) noexcept {
    if (mask == 0) return 0;
    const std::uint32_t value = (pixel & mask) >> std::countr_zero(mask);
    const int bits = std::popcount(mask);
    if (bits >= 8) return (value >> (bits - 8)) & 0xFF;
    return value * 255 / ((1U << bits) - 1);
}

std::uint32_t PixelAt(const Dib& dib, std::size_t row, std::uint32_t x) {
    const std::size_t start = row * dib.ColorStride();
    const auto packed = [&](std::uint32_t perByte) {
        const std::uint32_t byte = *dib.colors.At<std::uint8_t>(start + x / perByte);
        const std::uint32_t index = (byte >> ((perByte - 1 - x % perByte) * dib.bits)) & ((1U << dib.bits) - 1);
        return index < dib.palette.size() ? dib.palette[index] : 0;
    };
    if (dib.bits <= 8) return packed(8 / dib.bits);
    if (dib.bits == 24) {
        const std::size_t at = start + std::size_t{x} * 3;
        return std::uint32_t{*dib.colors.At<std::uint16_t>(at)} | std::uint32_t{*dib.colors.At<std::uint8_t>(at + 2)}
                                                                      << 16;
    }
    const std::uint32_t pixel = dib.bits == 16 ? *dib.colors.At<std::uint16_t>(start + std::size_t{x} * 2)
                                               : *dib.colors.At<std::uint32_t>(start + std::size_t{x} * 4);
    const std::uint32_t color =
        Channel(pixel, dib.masks[0]) << 16 | Channel(pixel, dib.masks[1]) << 8 | Channel(pixel, dib.masks[2]);
    return dib.bits == 32 ? color | (pixel & ~(dib.masks[0] | dib.masks[1] | dib.masks[2])) : color;
}

}  // namespace

std::optional<IconImage> DecodeIconImage(ByteView block) {
    if (block.At<std::uint32_t>(0) == kPngStart) return DecodePngImage(block);
    Dib dib;
    if (!ReadDib(block, dib)) return std::nullopt;
    IconImage image;
    image.width = dib.width;
    image.height = dib.height;
    image.monochrome = dib.bits == 1 && dib.palette.size() == 2 && dib.palette[0] == 0 && dib.palette[1] == 0xFFFFFF;
    const std::size_t pixels = std::size_t{dib.width} * dib.height;
    image.color.resize(pixels);
    image.mask.resize(pixels);
    for (std::uint32_t y = 0; y < dib.height; ++y) {
        const std::size_t row = dib.height - 1 - y;  // bitmaps stand bottom line first
        for (std::uint32_t x = 0; x < dib.width; ++x) {
            const std::size_t at = std::size_t{y} * dib.width + x;
            image.color[at] = PixelAt(dib, row, x);
            const auto mask = dib.mask.At<std::uint8_t>(row * dib.MaskStride() + x / 8);
            image.mask[at] = mask ? static_cast<std::uint8_t>((*mask >> (7 - x % 8)) & 1) : std::uint8_t{0};
        }
    }
    return image;
}

IconImage ScaleIconImage(IconImage image, std::uint32_t pixels) {
    if (image.IsEmpty() || (image.width == pixels && image.height == pixels)) return image;
    IconImage scaled;
    scaled.width = pixels;
    scaled.height = pixels;
    scaled.monochrome = image.monochrome;
    scaled.color.resize(std::size_t{pixels} * pixels);
    scaled.mask.resize(scaled.color.size());
    for (std::uint32_t y = 0; y < pixels; ++y) {
        const std::size_t row = std::size_t{y} * image.height / pixels * image.width;
        for (std::uint32_t x = 0; x < pixels; ++x) {
            const std::size_t from = row + std::size_t{x} * image.width / pixels;
            const std::size_t to = std::size_t{y} * pixels + x;
            scaled.color[to] = image.color[from];
            scaled.mask[to] = image.mask[from];
        }
    }
    return scaled;
}

}  // namespace roundup
