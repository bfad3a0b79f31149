#include "utility/wildcard.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>

namespace roundup {
namespace {

using View = std::u16string_view;

// What the two functions mean, by trying everything.
bool Reference(View text, View pattern) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] == u'*')
        return Reference(text, pattern.substr(1)) || (!text.empty() && Reference(text.substr(1), pattern));
    return !text.empty() && (pattern[0] == u'?' || pattern[0] == text[0]) &&
           Reference(text.substr(1), pattern.substr(1));
}

std::ptrdiff_t ReferenceFind(View text, View pattern, std::size_t start) {
    for (std::size_t at = start; at + pattern.size() <= text.size(); ++at) {
        if (Reference(text.substr(at, pattern.size()), pattern)) return static_cast<std::ptrdiff_t>(at);
    }
    return -1;
}

std::u16string RandomText(std::mt19937& random, View alphabet, std::size_t longest) {
    std::u16string text(random() % (longest + 1), u' ');
    for (char16_t& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

TEST(WildcardTest, RandomPatterns_AgreeWithTryingEverything) {
    std::mt19937 random(7);
    int matches = 0;
    for (int round = 0; round < 40000; ++round) {
        const std::u16string text = RandomText(random, u"ab", 12);
        const std::u16string pattern = RandomText(random, u"aabb?*", 8);
        const bool expected = Reference(text, pattern);
        matches += expected ? 1 : 0;
        ASSERT_EQ(WildMatch(text, pattern, true), expected)
            << std::string(text.begin(), text.end()) << " | " << std::string(pattern.begin(), pattern.end());
        std::u16string upper = text;
        for (char16_t& c : upper) c = static_cast<char16_t>(c - 0x20);
        ASSERT_EQ(WildMatch(upper, pattern, false), expected);
    }
    EXPECT_GT(matches, 1000);
}

TEST(WildcardTest, RandomSearches_FindTheFirstPlace) {
    std::mt19937 random(8);
    for (int round = 0; round < 40000; ++round) {
        const std::u16string text = RandomText(random, u"ab", 40);
        const std::u16string pattern = RandomText(random, round % 2 == 0 ? u"ab" : u"ab?", 6);
        const std::size_t start = random() % 8;
        const std::ptrdiff_t expected =
            pattern.empty() ? static_cast<std::ptrdiff_t>(start) : ReferenceFind(text, pattern, start);
        ASSERT_EQ(WildFind(text, pattern, start), expected)
            << std::string(text.begin(), text.end()) << " | " << std::string(pattern.begin(), pattern.end());
    }
    // Longer than what the search keeps on the stack.
    const std::u16string many(300, u'a');
    EXPECT_EQ(WildFind(many + u"b" + many + u"c", many + u"c", 0), 301);
}

TEST(WildcardTest, CaseBeyondAscii_FoldsBetweenTheStarsAlone) {
    const std::tuple<View, View, bool> cases[] = {
        {u"x\u00E9y", u"*\u00C9*", true}, {u"\u00E9y", u"\u00C9*", false},    {u"y\u00E9", u"*\u00C9", false},
        {u"\u00E9", u"\u00C9", false},    {u"SETUP.exe", u"setup.EXE", true}, {u"a[", u"A{", false},
    };
    for (const auto& [text, pattern, matches] : cases) EXPECT_EQ(WildMatch(text, pattern, false), matches);
}

// Tried by backtracking this one would not end.
TEST(WildcardTest, ManyStarsOverALongText_EndsAtOnce) {
    std::u16string pattern;
    for (int i = 0; i < 100; ++i) pattern += u"*a";
    const std::u16string text(30000, u'a');
    EXPECT_FALSE(WildMatch(text, pattern + u"*b*", false));
    EXPECT_TRUE(WildMatch(text, pattern + u"*", false));
    EXPECT_EQ(WildFind(text, std::u16string(15000, u'a') + u"b", 0), -1);
}

}  // namespace
}  // namespace roundup
