#include <png.h>

#include "platform/pngpixels.h"

namespace roundup {

bool ReadPngPixels(std::span<const std::byte> file, std::uint32_t width, std::uint32_t height, std::uint32_t* pixels) {
    png_image reader = {};
    reader.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&reader, file.data(), file.size()) == 0) return false;
    reader.format = PNG_FORMAT_BGRA;  // in memory order
    const bool read = reader.width == width && reader.height == height &&
                      png_image_finish_read(&reader, nullptr, pixels, 0, nullptr) != 0;
    png_image_free(&reader);
    return read;
}

}  // namespace roundup
