// Paths as text: cleaning what the registry says, expanding, long and short forms.
//
// Targets are arrays of size characters, terminator included, and must not overlap the source. A path is never cut:
// what does not fit leaves the target empty, so that it cannot name another file.
#pragma once

#include <cstddef>
#include <string_view>

#include "utility/fixedtext.h"
#include "utility/ownedstring.h"

namespace roundup {

// Cleans a path in place; answers its new length. A quoted text is cut behind the closing quote; doubled backslashes
// become one; a "/" separates like "\" when the text exists as a path, else it begins a command-line switch, which
// goes with the blanks in front of it; one trailing backslash goes. Asks the machine only when there is a "/", and 16
// times at most about forms of 520 or more characters, which then count as absent.
std::size_t CleanPath(char16_t* text);
void CleanPath(OwnedString& text);
template <std::size_t N>
void CleanPath(FixedText<N>& text) {
    CleanPath(text.Data());
}

// True for a path that CleanPath leaves as it is without asking the machine.
bool IsCleanPath(std::u16string_view path) noexcept;

// CleanPath, then environment variables when the text begins with "%", then the long form. A text that ends up empty,
// or has 520 or more characters, leaves the string as it was.
void ExpandPath(OwnedString& path);

// The text with its environment variables replaced; the source itself, cut to the array, when the machine cannot
// or the result does not fit.
void ExpandEnvText(const char16_t* source, char16_t* target, std::size_t size);

// The long and the short form of an existing path; the source itself when there is none; empty when that does not
// fit. Answers the length of what target holds. found, when given, tells whether it is that form.
std::size_t GetLongPath(const char16_t* source, char16_t* target, std::size_t size, bool* found = nullptr);
std::size_t GetShortPath(const char16_t* source, char16_t* target, std::size_t size);

template <std::size_t N>
void ExpandEnvText(const char16_t* source, FixedText<N>& target) {
    ExpandEnvText(source, target.Data(), N);
}
template <std::size_t N>
void GetLongPath(const char16_t* source, FixedText<N>& target) {
    GetLongPath(source, target.Data(), N);
}
template <std::size_t N>
void GetShortPath(const char16_t* source, FixedText<N>& target) {
    GetShortPath(source, target.Data(), N);
}

}  // namespace roundup
