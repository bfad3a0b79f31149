#include <png.h>

#include "platform/recorded/icons/iconimage.h"

namespace roundup {

std::optional<IconImage> DecodePngImage(ByteView block) {
    png_image reader = {};
    reader.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&reader, block.Data(), block.Size()) == 0) return std::nullopt;
    std::optional<IconImage> image;
    if (reader.width > 0 && reader.width <= kLargestIconSide && reader.height > 0 &&
        reader.height <= kLargestIconSide) {
        image.emplace();
        image->width = reader.width;
        image->height = reader.height;
        reader.format = PNG_FORMAT_BGRA;  // in memory order: a little-endian 0xAARRGGBB
        image->color.resize(std::size_t{reader.width} * reader.height);
        image->mask.resize(image->color.size());
        if (png_image_finish_read(&reader, nullptr, image->color.data(), 0, nullptr) == 0) image.reset();
    }
    png_image_free(&reader);
    return image;
}

}  // namespace roundup
