// Icons as blocks of bytes in the format of .ico files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/shell.h"

namespace roundup {

// The bytes of the icon that a path and an index name: a .ico file whole, or a one-image .ico made from the icon of a
// program or, without one, from what the shell shows for the path. False, and bytes null and size 0, when there is
// none.
bool LoadIconBytes(const char16_t* path, std::int32_t index, std::unique_ptr<std::byte[]>& bytes, std::uint32_t& size);

// Writes the icon as a .ico file of one image: 32-bit colour with a 1-bit mask. With a null buffer only the size is
// told. size: in, bytes of room; out, bytes needed or written. False, with a log line, for an icon without a colour
// bitmap, an image above 1024 pixels a side, and a buffer that is too small. The icon stays the caller's.
bool IconToMemory(IconHandle icon, std::byte* buffer, std::uint32_t& size);

}  // namespace roundup
