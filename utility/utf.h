// Conversions between UTF-16, the system's own text, and UTF-8, that of the files and consoles outside of it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace roundup {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// An unpaired surrogate becomes U+FFFD. Throws std::bad_alloc.
std::string ToUtf8(std::u16string_view text);

// Every maximal piece that begins no character becomes one U+FFFD, as the Unicode standard recommends (chapter 3.9,
// "U+FFFD Substitution of Maximal Subparts"): overlong forms, surrogates and values above U+10FFFF are none either.
// Throws std::bad_alloc.
std::u16string FromUtf8(std::string_view text);

// The same, but invalid input gives false, the position of its first invalid byte in fault, and leaves target as it
// was. Throws std::bad_alloc.
bool FromUtf8Strict(std::string_view text, std::u16string& target, std::size_t& fault);

// Takes the first character off a text that is not empty; U+FFFD for what is none. valid, when given, tells that
// U+FFFD from one that the text holds.
char32_t TakeCharacter(std::string_view& text, bool* valid = nullptr) noexcept;
char32_t TakeCharacter(std::u16string_view& text) noexcept;

// Writes the one or two units of a character and answers their number.
std::size_t ToUnits(char32_t character, char16_t (&units)[2]) noexcept;

}  // namespace roundup
