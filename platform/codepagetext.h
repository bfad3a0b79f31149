// Texts of code pages: what the platform itself knows of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace roundup {

// The text as the platform reads that page (numbers as Windows has them), in place of what target was; what is no
// character becomes U+FFFD, or what the platform has for it. False for a page that is not known. Every thread may
// call. Throws std::bad_alloc.
bool DecodeByPlatform(std::uint32_t page, std::string_view text, std::u16string& target);

}  // namespace roundup
