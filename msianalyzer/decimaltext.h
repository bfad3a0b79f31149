// Numbers that an installer database keeps as texts.
#pragma once

#include <cstdint>
#include <string_view>

namespace roundup {

// The number that the text begins with, as _wtoi64 of the C library reads it: blanks and a sign before it are allowed.
// 0 for a text that begins with none; what does not fit stops at the largest or smallest number.
std::int64_t DecimalOf(std::u16string_view text) noexcept;

}  // namespace roundup
