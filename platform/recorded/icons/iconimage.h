// One image of an icon, decoded.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "utility/byteview.h"

namespace roundup {

// Rows from the top down. A colour is 0xAARRGGBB, as a 32-bit bitmap holds it; images of fewer bits have alpha 0.
struct IconImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool monochrome = false;  // 1 bit and a palette of black and white: the platform keeps no colour bitmap for it
    std::vector<std::uint32_t> color;
    std::vector<std::uint8_t> mask;  // 1 for a transparent pixel, a byte for each

    bool IsEmpty() const noexcept { return color.empty(); }
};

// Sides above this are no icon's.
inline constexpr std::uint32_t kLargestIconSide = 1024;

// Decodes a resource or a part of an .ico file: a device-independent bitmap of 1, 4, 8, 16, 24 or 32 bits with its
// mask below it ("Icons", BITMAPINFOHEADER and BITMAPCOREHEADER in the Windows documentation), or a PNG. An image
// without a mask gets it from its alpha. Nothing for what is neither, broken or compressed otherwise. Throws
// std::bad_alloc.
std::optional<IconImage> DecodeIconImage(ByteView block);

// The PNG half, by the decoder of the system.
std::optional<IconImage> DecodePngImage(ByteView block);

// The image in a square of that many pixels. Where several fall together, the bits that all of them have are left, as
// the platform stretches icons. The same image when it has that size.
IconImage ScaleIconImage(IconImage image, std::uint32_t pixels);

}  // namespace roundup
