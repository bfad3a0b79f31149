// The images that stand for one icon in several sizes and depths, and the choice among them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "utility/byteview.h"

namespace roundup {

// One image of an icon. Formats: GRPICONDIR of a program's resources and ICONDIR of an .ico file ("Icons" in the
// Windows documentation).
struct IconImageInfo {
    std::uint32_t width = 0;   // pixels
    std::uint32_t height = 0;  // pixels
    std::uint32_t bits = 0;    // of a pixel, as the directory says: the choice goes by it even where the image differs
    std::uint32_t number = 0;  // the resource's number
    std::uint32_t offset = 0;  // in the .ico file
    std::uint32_t size = 0;    // bytes
};

std::vector<IconImageInfo> ReadIconGroup(ByteView resource);
// Empty for a block that is no .ico file; images that do not lie in it are left out.
std::vector<IconImageInfo> ReadIconFile(ByteView file);

// The image that the platform shows at that size on a display of 32 bits: the closest in size, and of those the
// closest in depth; the first of equals. Nothing for an empty list.
std::optional<std::size_t> ChooseIconImage(const std::vector<IconImageInfo>& images, std::uint32_t pixels) noexcept;

}  // namespace roundup
