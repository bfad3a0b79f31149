// Comparison goes by words of four units. Two equal words need no mapping at all, and a word of ASCII letters folds
// in a few operations: each unit has room above its seven bits, so that one addition compares all four with a bound.
//
//     unit + 0x1F  has bit 7 set from 'a' (0x61) on
//     unit + 0x05  has bit 7 set from '{' (0x7B) on
//
// The first without the second marks the lower-case letters, and that mark two places down is their bit 0x20. The
// result is the same on either byte order, since no carry leaves a unit.
#include "utility/casemap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "utility/casemap_table.h"

namespace roundup {

namespace {

constexpr std::size_t kWordUnits = 4;
constexpr std::uint64_t kEachUnit = 0x0001000100010001U;

std::uint64_t LoadWord(const char16_t* units) noexcept {
    std::uint64_t word;
    std::memcpy(&word, units, sizeof word);
    return word;
}

bool IsAscii(std::uint64_t word) noexcept { return (word & (kEachUnit * 0xFF80U)) == 0; }

std::uint64_t UpperAscii(std::uint64_t word) noexcept {
    const std::uint64_t letters = (word + kEachUnit * 0x1FU) & ~(word + kEachUnit * 0x05U) & (kEachUnit * 0x80U);
    return word - (letters >> 2);
}

std::uint64_t UpperWord(std::uint64_t word) noexcept {
    if (IsAscii(word)) return UpperAscii(word);
    char16_t units[kWordUnits];
    std::memcpy(units, &word, sizeof word);
    for (char16_t& unit : units) unit = ToUpper(unit);
    return LoadWord(units);
}

// The same for texts that differ in case alone, and for few others: a letter of ASCII without the bit that is its case.
std::uint64_t HashedWord(std::uint64_t word) noexcept {
    if (!IsAscii(word)) word = UpperWord(word);
    return word & ~(kEachUnit * 0x20U);
}

// The first position at which two texts of at least length units can differ; those before are equal as they stand.
std::size_t SkipEqualWords(const char16_t* a, const char16_t* b, std::size_t length) noexcept {
    std::size_t at = 0;
    while (at + kWordUnits <= length && LoadWord(a + at) == LoadWord(b + at)) at += kWordUnits;
    return at;
}

template <char16_t (*Map)(char16_t) noexcept>
std::strong_ordering Compare(std::u16string_view a, std::u16string_view b) noexcept {
    const std::size_t length = std::min(a.size(), b.size());
    for (std::size_t at = SkipEqualWords(a.data(), b.data(), length); at < length; ++at) {
        if (a[at] == b[at]) continue;
        const char16_t left = Map(a[at]);
        const char16_t right = Map(b[at]);
        if (left != right) return left <=> right;
    }
    return a.size() <=> b.size();
}

// Multiplies, and folds the upper half, which the product mixes best, into the lower one, which selects the bucket.
std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) noexcept {
    const std::uint64_t product = (hash ^ word) * 0x9E3779B97F4A7C15U;
    return product ^ (product >> 32);
}

char16_t AddOffset(char16_t c, const std::uint8_t* index, const std::uint16_t* offsets) noexcept {
    const std::size_t page = index[c / casemap_detail::kPageSize];
    return static_cast<char16_t>(c + offsets[page * casemap_detail::kPageSize + c % casemap_detail::kPageSize]);
}

}  // namespace

namespace casemap_detail {

char16_t UpperBeyondAscii(char16_t c) noexcept { return AddOffset(c, kUpperIndex, kUpperOffsets); }
char16_t LowerBeyondAscii(char16_t c) noexcept { return AddOffset(c, kLowerIndex, kLowerOffsets); }

}  // namespace casemap_detail

std::strong_ordering CompareNoCase(std::u16string_view a, std::u16string_view b) noexcept {
    return Compare<ToLower>(a, b);
}

std::strong_ordering CompareFolded(std::u16string_view a, std::u16string_view b) noexcept {
    return Compare<ToUpper>(a, b);
}

bool EqualsNoCase(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() && StartsWithNoCase(a, b);
}

bool StartsWithNoCase(std::u16string_view text, std::u16string_view start) noexcept {
    if (start.size() > text.size()) return false;
    std::size_t at = 0;
    for (; at + kWordUnits <= start.size(); at += kWordUnits) {
        const std::uint64_t left = LoadWord(text.data() + at);
        const std::uint64_t right = LoadWord(start.data() + at);
        if (left != right && UpperWord(left) != UpperWord(right)) return false;
    }
    for (; at < start.size(); ++at) {
        if (text[at] != start[at] && ToUpper(text[at]) != ToUpper(start[at])) return false;
    }
    return true;
}

std::size_t HashNoCase(std::u16string_view text) noexcept {
    // Two chains side by side: each word waits for the product of the one before it.
    std::uint64_t hash = text.size();
    std::uint64_t other = 0;
    std::size_t at = 0;
    for (; at + 2 * kWordUnits <= text.size(); at += 2 * kWordUnits) {
        hash = Mix(hash, HashedWord(LoadWord(text.data() + at)));
        other = Mix(other, HashedWord(LoadWord(text.data() + at + kWordUnits)));
    }
    if (at + kWordUnits <= text.size()) {
        hash = Mix(hash, HashedWord(LoadWord(text.data() + at)));
        at += kWordUnits;
    }
    if (at < text.size()) {
        char16_t last[kWordUnits] = {};
        for (std::size_t i = 0; at + i < text.size(); ++i) last[i] = text[at + i];
        other = Mix(other, HashedWord(LoadWord(last)));
    }
    return static_cast<std::size_t>(Mix(hash, other));
}

}  // namespace roundup
