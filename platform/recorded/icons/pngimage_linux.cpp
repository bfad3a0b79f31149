#include <png.h>

#include "platform/recorded/icons/pngpicture.h"

namespace roundup {

bool ReadPngPixels(std::span<const std::byte> file, IconImage& image) {
    png_image reader = {};
    reader.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&reader, file.data(), file.size()) == 0) return false;
    reader.format = PNG_FORMAT_BGRA;  // in memory order
    const bool read = reader.width == image.width && reader.height == image.height &&
                      png_image_finish_read(&reader, nullptr, image.color.data(), 0, nullptr) != 0;
    png_image_free(&reader);
    return read;
}

}  // namespace roundup
