// A small file of the machine, read as one block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace roundup {

// Reads the whole file, which others may read and write meanwhile; front bytes of zeros stand before what was read.
// False, and bytes empty, when the file cannot be opened or read, when it has more than limit bytes, or when it is
// shorter by the time it is read than it was when it was opened. Throws std::bad_alloc for want of memory.
bool ReadWholeFile(const char16_t* path, std::uint32_t limit, std::vector<std::byte>& bytes, std::size_t front = 0);

}  // namespace roundup
