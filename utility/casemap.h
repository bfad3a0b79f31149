// The one case mapping of the system: the simple mappings of the basic plane, the same on every platform.
#pragma once

#include <compare>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace roundup {

namespace casemap_detail {
char16_t UpperBeyondAscii(char16_t c) noexcept;
char16_t LowerBeyondAscii(char16_t c) noexcept;
}  // namespace casemap_detail

// Simple upper- and lower-case mapping of one UTF-16 unit (UnicodeData.txt); surrogates and units without a mapping
// stay as they are. Mappings that do not come back are left out, as in Windows' own table (tools/make-casemap.py tells
// which): so no unit beyond ASCII maps to an ASCII one, and texts equal in upper case are equal in lower case too.
inline char16_t ToUpper(char16_t c) noexcept {
    if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 0x20) : c;
    return casemap_detail::UpperBeyondAscii(c);
}
inline char16_t ToLower(char16_t c) noexcept {
    if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 0x20) : c;
    return casemap_detail::LowerBeyondAscii(c);
}

// Order by lower-cased units, as the C run time's _wcsicmp does; a text that ends first is less.
std::strong_ordering CompareNoCase(std::u16string_view a, std::u16string_view b) noexcept;
bool EqualsNoCase(std::u16string_view a, std::u16string_view b) noexcept;
bool StartsWithNoCase(std::u16string_view text, std::u16string_view start) noexcept;

// Order by upper-cased units: that of registry keys and of the entries of a folder.
std::strong_ordering CompareFolded(std::u16string_view a, std::u16string_view b) noexcept;

// The same text, case and all. What the library has for such views compares unit by unit.
inline bool EqualsExactly(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
}

// Hash of the upper-cased units; equal for texts that EqualsNoCase.
std::size_t HashNoCase(std::u16string_view text) noexcept;

// For hash containers keyed by names: transparent, so that views look up without a copy.
struct NoCaseHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const noexcept { return HashNoCase(text); }
};
struct NoCaseEqual {
    using is_transparent = void;
    bool operator()(std::u16string_view a, std::u16string_view b) const noexcept { return EqualsNoCase(a, b); }
};

}  // namespace roundup
