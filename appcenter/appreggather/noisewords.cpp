#include "appcenter/appreggather/noisewords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace roundup {

namespace {

constexpr std::u16string_view kNoiseWords[] = {
    u"software",     u"windows",    u"microsoft",
    u"service",      u"services",   u"tool",
    u"tools",        u".ltd",       u"company",
    u"english",      u"server",     u"x64",
    u"x86",          u"runtime",    u"sdk",
    u"framework",    u"sp1",        u"sp2",
    u"sp3",          u"sp4",        u"program",
    u"setup",        u"version",    u"technologies",
    u"technology",   u"internet",   u"security",
    u"visual",       u"studio",     u"web",
    u"authoring",    u"component",  u"the",
    u"system",       u"file",       u"workstation",
    u"professional", u"free",       u"trial",
    u"database",     u"publishing", u"wizard",
    u"publish",      u"technician", u"home",
    u"advanced",     u"ultimate",   u"application",
    u"primary",      u"update",     u"and",
    u"for",          u"of",         u"information",
    u"edition",      u"preemptive", u"solution",
    u"solutions",    u"-",          u"to",
    u"italian",      u"italiano",   u"italian\\italiano",
    u"licensing",
};
static_assert(std::size(kNoiseWords) == 64);

// Each word that a scan finds is looked up here: the list is put in order when the program is compiled.
constexpr auto kOrdered = [] {
    std::array<std::u16string_view, std::size(kNoiseWords)> words{};
    std::ranges::copy(kNoiseWords, words.begin());
    std::ranges::sort(words);
    return words;
}();

constexpr std::size_t kLongest = std::ranges::max(kOrdered, {}, &std::u16string_view::size).size();

constexpr bool IsNumberPart(char16_t c) { return (c >= u'0' && c <= u'9') || c == u'.'; }

}  // namespace

bool IsNoiseWord(TextOrNull text) noexcept {
    const std::u16string_view word = text.View();
    if (std::ranges::all_of(word, IsNumberPart)) return true;
    if (word.size() > kLongest) return false;
    char16_t lower[kLongest];
    std::ranges::transform(
        word, lower, [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c; });
    return std::ranges::binary_search(kOrdered, std::u16string_view(lower, word.size()));
}

}  // namespace roundup
