#include "utility/wildcard.h"

#include <cstdint>
#include <memory>
#include <new>

#include "utility/casemap.h"

namespace roundup {

namespace {

struct Exactly {
    char16_t operator()(char16_t c) const noexcept { return c; }
};
struct Lowered {
    char16_t operator()(char16_t c) const noexcept { return ToLower(c); }
};
struct AsciiLowered {
    char16_t operator()(char16_t c) const noexcept {
        return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 0x20) : c;
    }
};

template <class Fold>
bool MatchesAt(std::u16string_view text, std::size_t at, std::u16string_view run, Fold fold) noexcept {
    for (std::size_t i = 0; i < run.size(); ++i) {
        if (run[i] != u'?' && fold(run[i]) != fold(text[at + i])) return false;
    }
    return true;
}

// For each prefix of the pattern the length of its longest border: the longest proper prefix that is its suffix too.
template <class Fold>
void FillBorders(std::u16string_view pattern, Fold fold, std::uint32_t* borders) noexcept {
    std::uint32_t border = 0;
    borders[0] = 0;
    for (std::size_t i = 1; i < pattern.size(); ++i) {
        while (border != 0 && fold(pattern[i]) != fold(pattern[border])) border = borders[border - 1];
        if (fold(pattern[i]) == fold(pattern[border])) ++border;
        borders[i] = border;
    }
}

template <class Fold>
std::ptrdiff_t FindByBorders(std::u16string_view text, std::u16string_view pattern, std::size_t start, Fold fold,
                             const std::uint32_t* borders) noexcept {
    std::uint32_t matched = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
        while (matched != 0 && fold(text[i]) != fold(pattern[matched])) matched = borders[matched - 1];
        if (fold(text[i]) == fold(pattern[matched])) ++matched;
        if (matched == pattern.size()) return static_cast<std::ptrdiff_t>(i + 1 - pattern.size());
    }
    return -1;
}

template <class Fold>
std::ptrdiff_t FindByPlace(std::u16string_view text, std::u16string_view pattern, std::size_t start,
                           Fold fold) noexcept {
    for (std::size_t at = start; at + pattern.size() <= text.size(); ++at) {
        if (MatchesAt(text, at, pattern, fold)) return static_cast<std::ptrdiff_t>(at);
    }
    return -1;
}

// Knuth, Morris and Pratt: the text is read once, and on a mismatch the pattern moves on to its next border instead of
// by one, so that "aaab" in "aaaaaaab" never looks back.
//
// That rests on equality being transitive: the border equals the text because both equal the pattern's end. A "?"
// breaks it. With the pattern "a?b" matched up to "ac" of the text "acab", the "?" (which matched "c") and the "a" in
// front of it look like a border, but "c" is no "a"; a shift by it goes on to report "cab".
// Patterns with "?" are therefore tried place by place. They are short words of rule files.
template <class Fold>
std::ptrdiff_t Find(std::u16string_view text, std::u16string_view pattern, std::size_t start, Fold fold) noexcept {
    if (pattern.empty()) return static_cast<std::ptrdiff_t>(start);
    if (pattern.size() > text.size() || start > text.size() - pattern.size()) return -1;
    if (pattern.find(u'?') != std::u16string_view::npos) return FindByPlace(text, pattern, start, fold);

    constexpr std::size_t kOnStack = 128;
    std::uint32_t few[kOnStack];
    std::unique_ptr<std::uint32_t[]> many;
    if (pattern.size() > kOnStack) {
        many.reset(new (std::nothrow) std::uint32_t[pattern.size()]);
        if (many == nullptr) return FindByPlace(text, pattern, start, fold);
    }
    std::uint32_t* borders = many != nullptr ? many.get() : few;
    FillBorders(pattern, fold, borders);
    return FindByBorders(text, pattern, start, fold, borders);
}

bool RunMatchesAt(std::u16string_view text, std::size_t at, std::u16string_view run, bool matchCase) noexcept {
    if (run.size() > text.size() - at) return false;
    return matchCase ? MatchesAt(text, at, run, Exactly{}) : MatchesAt(text, at, run, AsciiLowered{});
}

}  // namespace

std::ptrdiff_t WildFind(std::u16string_view text, std::u16string_view pattern, std::size_t start) noexcept {
    return Find(text, pattern, start, Exactly{});
}

// The pattern is a row of literal runs with stars between them. The first run stands at the text's start and the last
// at its end; each one between goes to its first place behind the one before it. Taking the first place is safe: a
// later one would only leave less text for the runs that follow.
bool WildMatch(std::u16string_view text, std::u16string_view pattern, bool matchCase) noexcept {
    const std::size_t firstStar = pattern.find(u'*');
    if (firstStar == std::u16string_view::npos) {
        return text.size() == pattern.size() && RunMatchesAt(text, 0, pattern, matchCase);
    }
    if (!RunMatchesAt(text, 0, pattern.substr(0, firstStar), matchCase)) return false;
    std::size_t at = firstStar;
    std::size_t begin = firstStar + 1;
    for (;;) {
        const std::size_t end = pattern.find(u'*', begin);
        if (end == std::u16string_view::npos) break;
        const std::u16string_view run = pattern.substr(begin, end - begin);
        const std::ptrdiff_t found = matchCase ? Find(text, run, at, Exactly{}) : Find(text, run, at, Lowered{});
        if (found < 0) return false;
        at = static_cast<std::size_t>(found) + run.size();
        begin = end + 1;
    }
    const std::u16string_view last = pattern.substr(begin);
    return last.size() <= text.size() - at && RunMatchesAt(text, text.size() - last.size(), last, matchCase);
}

}  // namespace roundup
