// The text of rule files of either format: encoding, lines, keywords, registry roots.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {

// Bytes. A file above it is no rule file and counts as unreadable.
inline constexpr std::uint64_t kLargestRuleFile = 0x400000;

// Reads a whole file through the host's file object. UTF-16 little-endian; the first character is the byte-order mark
// and is dropped unread, as is an odd byte at the end. The text ends at its first zero. False, and text null, for a
// file that is missing, empty, above kLargestRuleFile or cannot be read, and when memory is short.
bool ReadRuleText(const char16_t* path, OwnedString& text);

// Takes a text apart at CR LF; the last line may end with the text. Comments are left out.
class RuleTextLines {
  public:
    explicit RuleTextLines(std::u16string_view text) noexcept : m_rest(text) {}
    // False at the end.
    bool Next(std::u16string_view& line) noexcept;

  private:
    std::u16string_view m_rest;
};

inline std::u16string_view SkipBlanks(std::u16string_view text) noexcept {
    const std::size_t start = text.find_first_not_of(u' ');
    return start != std::u16string_view::npos ? text.substr(start) : std::u16string_view();
}

// A word that a line or a value begins with, and what it stands for.
template <class T>
struct RuleWord {
    std::u16string_view text;
    T value;
};

// The first word of the table with which text begins, ignoring case; the word and the blanks behind it are taken off.
// Null, and text untouched, without one.
template <class T, std::size_t N>
const RuleWord<T>* TakeWord(std::u16string_view& text, const RuleWord<T> (&table)[N]) noexcept {
    for (const RuleWord<T>& word : table) {
        if (!StartsWithNoCase(text, word.text)) continue;
        text = SkipBlanks(text.substr(word.text.size()));
        return &word;
    }
    return nullptr;
}

// Takes a registry root ("HKLM,") and the blanks behind it off the text; answers its number (RuleRoot).
std::optional<std::uint32_t> TakeRegistryRoot(std::u16string_view& text) noexcept;

// The value of an APPENDPROC line.
inline bool IsSetFlag(std::u16string_view value) noexcept { return value.empty() || value.front() != u'0'; }

// The path without one backslash at its end.
inline std::u16string_view WithoutTrailingBackslash(std::u16string_view path) noexcept {
    if (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
    return path;
}

}  // namespace roundup
