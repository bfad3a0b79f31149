#include "platform/recorded/icons/iconimage.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace roundup {

namespace {

constexpr std::uint32_t kUncompressed = 0;  // BI_RGB
constexpr std::uint32_t kBitFields = 3;     // BI_BITFIELDS
constexpr std::uint32_t kPngStart = 0x474E5089U;

constexpr std::uint32_t kCoreHeader = 12;  // BITMAPCOREHEADER
constexpr std::uint32_t kInfoHeader = 40;  // BITMAPINFOHEADER

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
    bool HasAlpha() const noexcept {
        return bits == 32 && masks[0] == 0xFF0000 && masks[1] == 0xFF00 && masks[2] == 0xFF;
    }
};

// What the two headers have in common. The larger ones of later systems are no icon's.
struct Header {
    std::uint32_t size = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t compression = kUncompressed;
    std::uint32_t used = 0;  // entries of the palette; 0: all that the depth allows
};

bool ReadHeader(ByteView block, Dib& dib, Header& header) {
    header.size = block.At<std::uint32_t>(0).value_or(0);
    if (header.size == kCoreHeader && block.Holds(0, kCoreHeader)) {
        header.width = *block.At<std::uint16_t>(4);
        header.height = *block.At<std::uint16_t>(6);
        dib.bits = *block.At<std::uint16_t>(10);
    } else if (header.size == kInfoHeader && block.Holds(0, kInfoHeader)) {
        header.width = *block.At<std::int32_t>(4);
        header.height = *block.At<std::int32_t>(8);
        dib.bits = *block.At<std::uint16_t>(14);
        header.compression = *block.At<std::uint32_t>(16);
        header.used = *block.At<std::uint32_t>(32);
    } else {
        return false;
    }
    constexpr auto kLargest = static_cast<std::int32_t>(kLargestIconSide);
    if (header.width <= 0 || header.width > kLargest || header.height <= 1 || header.height > 2 * kLargest)
        return false;
    dib.width = static_cast<std::uint32_t>(header.width);
    dib.height = static_cast<std::uint32_t>(header.height) / 2;
    return true;
}

// Where each channel stands in a pixel of 16 or 32 bits.
bool ReadChannels(ByteView block, const Header& header, Dib& dib, std::uint64_t& position) {
    if (dib.bits == 16) dib.masks[0] = 0x7C00, dib.masks[1] = 0x3E0, dib.masks[2] = 0x1F;
    if (header.compression == kUncompressed) return true;
    if (header.compression != kBitFields || (dib.bits != 16 && dib.bits != 32)) return false;
    for (std::uint32_t& mask : dib.masks) {
        const auto given = block.At<std::uint32_t>(position);
        if (!given) return false;
        mask = *given;
        position += 4;
    }
    return true;
}

bool ReadPalette(ByteView block, const Header& header, Dib& dib, std::uint64_t& position) {
    if (dib.bits > 8) return dib.bits == 16 || dib.bits == 24 || dib.bits == 32;
    if (dib.bits != 1 && dib.bits != 4 && dib.bits != 8) return false;
    const std::uint32_t most = 1U << dib.bits;
    dib.palette.resize(header.used == 0 || header.used > most ? most : header.used);
    const std::uint32_t entrySize = header.size == kCoreHeader ? 3 : 4;
    for (std::uint32_t& color : dib.palette) {
        const auto low = block.At<std::uint16_t>(position);
        const auto high = block.At<std::uint8_t>(position + 2);
        if (!high) return false;
        color = std::uint32_t{*low} | std::uint32_t{*high} << 16;
        position += entrySize;
    }
    return true;
}

bool ReadDib(ByteView block, Dib& dib) {
    Header header;
    if (!ReadHeader(block, dib, header)) return false;
    std::uint64_t position = header.size;
    if (!ReadChannels(block, header, dib, position) || !ReadPalette(block, header, dib, position)) return false;
    const std::uint64_t colorSize = std::uint64_t{dib.ColorStride()} * dib.height;
    const auto colors = block.Slice(position, colorSize);
    if (!colors) return false;
    dib.colors = *colors;
    // An image without its mask, or with a part of one, is shown all the same.
    dib.mask = block.Slice(position + colorSize, std::uint64_t{dib.MaskStride()} * dib.height).value_or(ByteView());
    return true;
}

// The part of a pixel under a mask, widened to 8 bits.
std::uint32_t Channel(std::uint32_t pixel, std::uint32_t mask) noexcept {
    if (mask == 0) return 0;
    const std::uint32_t value = (pixel & mask) >> std::countr_zero(mask);
    const int bits = std::popcount(mask);
    if (bits >= 8) return (value >> (bits - 8)) & 0xFF;
    const std::uint32_t high = value << (8 - bits);
    return high | high >> bits;
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
    return dib.HasAlpha() ? color | (pixel & 0xFF000000U) : color;
}

// The mask of an image that comes without one: all that is not wholly opaque, if any pixel has alpha at all.
void MaskFromAlpha(IconImage& image) {
    const auto alpha = [](std::uint32_t color) { return color >> 24; };
    if (std::none_of(image.color.begin(), image.color.end(), alpha)) return;
    std::transform(image.color.begin(), image.color.end(), image.mask.begin(),
                   [&](std::uint32_t color) { return alpha(color) == 0xFF ? std::uint8_t{0} : std::uint8_t{1}; });
}

}  // namespace

std::optional<IconImage> DecodeIconImage(ByteView block) {
    if (block.At<std::uint32_t>(0) == kPngStart) {
        std::optional<IconImage> png = DecodePngImage(block);
        if (png) MaskFromAlpha(*png);
        return png;
    }
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
    if (dib.mask.Size() == 0) MaskFromAlpha(image);
    return image;
}

namespace {

// The source pixels that one target pixel comes from.
struct Span {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

// The platform walks the longer side of a stretch with an error term, as a line is drawn: each step consumes one
// pixel of the longer side, and the shorter one advances when the term is positive.
std::vector<Span> StretchSpans(std::uint32_t source, std::uint32_t target) {
    const bool shrinks = source > target;
    const std::int64_t longer = shrinks ? source : target;
    const std::int64_t shorter = shrinks ? target : source;
    std::vector<Span> spans(target);
    std::int64_t error = 3 * shorter - 2 * longer;
    std::uint32_t slow = 0;
    for (std::uint32_t fast = 0; fast < longer; ++fast) {
        Span& span = spans[shrinks ? slow : fast];
        const std::uint32_t from = shrinks ? fast : slow;
        if (span.end == 0) span.first = from;
        span.end = from + 1;
        const bool advances = error > 0 && slow + 1 < shorter;
        error += 2 * shorter - (error > 0 ? 2 * longer : 0);
        slow += advances ? 1 : 0;
    }
    return spans;
}

}  // namespace

IconImage ScaleIconImage(IconImage image, std::uint32_t pixels) {
    if (image.IsEmpty() || (image.width == pixels && image.height == pixels)) return image;
    IconImage scaled;
    scaled.width = pixels;
    scaled.height = pixels;
    scaled.monochrome = image.monochrome;
    scaled.color.resize(std::size_t{pixels} * pixels);
    scaled.mask.resize(scaled.color.size());
    const std::vector<Span> columns = StretchSpans(image.width, pixels);
    const std::vector<Span> rows = StretchSpans(image.height, pixels);
    for (std::uint32_t y = 0; y < pixels; ++y) {
        for (std::uint32_t x = 0; x < pixels; ++x) {
            std::uint32_t color = 0xFFFFFFFF;
            std::uint8_t mask = 1;
            for (std::uint32_t row = rows[y].first; row < rows[y].end; ++row) {
                for (std::uint32_t column = columns[x].first; column < columns[x].end; ++column) {
                    const std::size_t from = std::size_t{row} * image.width + column;
                    color &= image.color[from];
                    mask &= image.mask[from];
                }
            }
            const std::size_t to = std::size_t{y} * pixels + x;
            scaled.color[to] = color;
            scaled.mask[to] = mask;
        }
    }
    return scaled;
}

}  // namespace roundup
