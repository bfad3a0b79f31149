#include "utility/casemap.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace roundup {
namespace {

TEST(CaseMap, EveryUnit_MapsOnceAndUpperAndLowerCaseMakeTheSameClasses) {
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        const auto c = static_cast<char16_t>(unit);
        const char16_t upper = ToUpper(c);
        const char16_t lower = ToLower(c);
        ASSERT_TRUE(ToUpper(upper) == upper && ToLower(lower) == lower) << std::hex << unit;
        ASSERT_TRUE(ToLower(upper) == lower && ToUpper(lower) == upper) << std::hex << unit;
        ASSERT_TRUE(unit < 0x80 || (upper >= 0x80 && lower >= 0x80)) << std::hex << unit;
        ASSERT_TRUE(unit < 0xD800 || unit >= 0xE000 || (upper == c && lower == c)) << std::hex << unit;
    }
}

TEST(CaseMap, PairsOfTheCharacterDatabase_MapToEachOther) {
    // Lower, upper: Latin, y diaeresis, Greek, sigma, Cyrillic, Armenian, with iota below (its full upper case has two
    // letters), Georgian, Cherokee, Glagolitic, Latin extended, full width.
    const char16_t pairs[][2] = {{u'a', u'A'},     {0x00E9, 0x00C9}, {0x00FF, 0x0178}, {0x03B1, 0x0391},
                                 {0x03C3, 0x03A3}, {0x0436, 0x0416}, {0x0561, 0x0531}, {0x1F80, 0x1F88},
                                 {0x1FB3, 0x1FBC}, {0x10D0, 0x1C90}, {0xAB70, 0x13A0}, {0x2C30, 0x2C00},
                                 {0x2C65, 0x023A}, {0xFF41, 0xFF21}, {0x01C6, 0x01C4}};
    for (const auto& [lower, upper] : pairs) {
        EXPECT_EQ(ToUpper(lower), upper);
        EXPECT_EQ(ToLower(upper), lower);
    }
    EXPECT_EQ(ToUpper(0x03C2), 0x03A3);  // final sigma
    // Without a partner that comes back: sharp s and its capital, the Turkish i's, long s, kelvin, micro, Dz title
    // form.
    for (const char16_t c : u"\u00DF\u1E9E\u0130\u0131\u017F\u212A\u00B5\u01C5") {
        EXPECT_TRUE(ToUpper(c) == c && ToLower(c) == c) << std::hex << static_cast<int>(c);
    }
}

// Whether texts are taken by words or by units must not show: the letter that differs stands at each position once.
TEST(CaseMap, TextsThatDifferAtOnePosition_CompareByThatLetterAlone) {
    for (std::size_t length = 1; length < 14; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (const char16_t filler : {u'Q', u'\u0416'}) {
                std::u16string text(length, filler);
                std::u16string same(length, ToLower(filler));
                std::u16string other = same;
                text[at] = u'\u00E9';
                same[at] = u'\u00C9';
                other[at] = u'\u00EA';
                EXPECT_TRUE(EqualsNoCase(text, same));
                EXPECT_EQ(HashNoCase(text), HashNoCase(same));
                EXPECT_TRUE(CompareNoCase(text, same) == 0 && CompareFolded(text, same) == 0);
                EXPECT_FALSE(EqualsNoCase(text, other));
                EXPECT_NE(HashNoCase(text), HashNoCase(other));
                EXPECT_TRUE(CompareNoCase(text, other) < 0 && CompareFolded(other, text) > 0);
                EXPECT_FALSE(StartsWithNoCase(text + u"tail", other));
                EXPECT_TRUE(StartsWithNoCase(text + u"tail", same));
            }
        }
    }
}

TEST(CaseMap, CharactersAroundTheAsciiLetters_AreNotFoldedAndOrderDifferentlyInTheTwoOrders) {
    for (const char16_t* pair : {u"@`", u"[{", u"\\|", u"^~", u"\u0000\u0020"}) {
        const std::u16string left(8, pair[0]);
        const std::u16string right(8, pair[1]);
        EXPECT_FALSE(EqualsNoCase(left, right));
    }
    // '_' stands between the upper and the lower-case letters.
    EXPECT_TRUE(CompareNoCase(u"_", u"A") < 0);
    EXPECT_TRUE(CompareFolded(u"_", u"a") > 0);
    EXPECT_FALSE(StartsWithNoCase(u"ab", u"abc"));
}

}  // namespace
}  // namespace roundup
