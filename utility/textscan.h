// Searches in texts, four characters at a time: values and paths are many, and what the library has for texts of this
// width looks at one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace roundup {

namespace textscan_detail {

inline constexpr std::size_t kWord = 4;  // characters
inline constexpr std::uint64_t kEach = 0x0001000100010001U;

inline bool WordHolds(const char16_t* text, std::uint64_t wanted) noexcept {
    std::uint64_t word;
    std::memcpy(&word, text, sizeof word);
    word ^= wanted;
    return ((word - kEach) & ~word & (kEach << 15)) != 0;  // a character that became 0
}

}  // namespace textscan_detail

// Where the character stands first; the length of the text when it does not.
inline std::size_t FindFirst(std::u16string_view text, char16_t wanted) noexcept {
    using namespace textscan_detail;
    std::size_t at = 0;
    while (at + kWord <= text.size() && !WordHolds(text.data() + at, wanted * kEach)) at += kWord;
    while (at < text.size() && text[at] != wanted) ++at;
    return at;
}

// The number of characters up to the last such one, itself included; 0 without one.
inline std::size_t EndOfLast(std::u16string_view text, char16_t wanted) noexcept {
    using namespace textscan_detail;
    std::size_t end = text.size();
    while (end >= kWord && !WordHolds(text.data() + end - kWord, wanted * kEach)) end -= kWord;
    while (end != 0 && text[end - 1] != wanted) --end;
    return end;
}

// Texts are zero-terminated, also one that was stored with a zero inside.
inline std::u16string_view UpToZero(std::u16string_view text) noexcept {
    return text.substr(0, FindFirst(text, u'\0'));
}

}  // namespace roundup
