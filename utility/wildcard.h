// Search and match with wildcards.
#pragma once

#include <cstddef>
#include <string_view>

namespace roundup {

// The index of the first match at or behind start, "?" in the pattern matching any character; -1 without one. Compares
// exactly. An empty pattern gives start.
std::ptrdiff_t WildFind(std::u16string_view text, std::u16string_view pattern, std::size_t start) noexcept;

// Matches the whole text: "*" any run of characters, also none, "?" one character. An empty pattern matches only the
// empty text. Without matchCase the part in front of the first "*" and the one behind the last fold A to Z alone,
// those between are compared lower-cased.
bool WildMatch(std::u16string_view text, std::u16string_view pattern, bool matchCase) noexcept;

}  // namespace roundup
