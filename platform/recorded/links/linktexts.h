// Texts in link files: zero-terminated, of one byte or two bytes a character.
#pragma once

#include <optional>
#include <string>

#include "utility/byteview.h"

namespace roundup {

// The text at offset up to its zero or the end of the block; empty behind the end. Throw std::bad_alloc.
std::u16string NarrowTextAt(ByteView block, std::uint64_t offset);
std::u16string WideTextAt(ByteView block, std::uint64_t offset);
// So many bytes as texts of one byte a character, and so many characters of two.
std::u16string DecodeNarrow(ByteView bytes);
std::u16string DecodeWide(ByteView bytes);

}  // namespace roundup
