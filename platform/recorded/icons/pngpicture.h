// Compressed images of icons: what is the same whoever decodes them.
#pragma once

#include <cstddef>
#include <span>

#include "platform/recorded/icons/iconimage.h"

namespace roundup {

// Decodes a PNG file whose sides are those of the image into its colors, which have the room: a little-endian
// 0xAARRGGBB each, not multiplied by their alpha. False for a file that breaks off or lies. By the library of the
// system. Throws std::bad_alloc.
bool ReadPngPixels(std::span<const std::byte> file, IconImage& image);

}  // namespace roundup
