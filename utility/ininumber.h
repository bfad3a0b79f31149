// Numbers in ini files.
#pragma once

#include <cstdint>

namespace roundup {

// GetPrivateProfileIntW: the number that a key's value begins with, in decimal, or in the base that "0x", "0o" or "0b"
// names; a minus gives its two's complement, and digits beyond 32 bits are lost at the top. A value that begins with no
// number is 0; fallback stands for a key that is absent or empty, and for a file that cannot be read.
std::uint32_t ReadIniNumber(const char16_t* section, const char16_t* key, std::uint32_t fallback, const char16_t* path);

}  // namespace roundup
