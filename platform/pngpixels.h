// The decoder of compressed pictures that the system has: libpng, or the imaging component of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace roundup {

// Decodes a PNG file (ISO/IEC 15948) of width times height pixels into as many numbers, line by line from the top: a
// little-endian 0xAARRGGBB each, not multiplied by its alpha. False for a file that breaks off, lies or has other
// sides. Any thread. Throws std::bad_alloc.
bool ReadPngPixels(std::span<const std::byte> file, std::uint32_t width, std::uint32_t height, std::uint32_t* pixels);

}  // namespace roundup
