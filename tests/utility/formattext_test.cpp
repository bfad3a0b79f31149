#include "utility/formattext.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace roundup {
namespace {

struct Case {
    std::u16string made;
    std::u16string expected;
};

void ExpectAll(const std::vector<Case>& cases) {
    for (const Case& one : cases) EXPECT_EQ(one.made, one.expected);
}

TEST(FormatText, NumberConversions_WriteAsTheCRunTimeOfWindowsDoes) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kLeast64 = std::numeric_limits<std::int64_t>::min();
    ExpectAll({
        {FormatText(u"%d %i %u", -1, kLeast, -1), u"-1 -2147483648 4294967295"},
        {FormatText(u"%x %X %#x %#X %#x", 0xAB, 0xAB, 0xAB, 0xAB, 0), u"ab AB 0xab 0XAB 0"},
        {FormatText(u"%I64u %I64d %lld", ~std::uint64_t{0}, kLeast64, std::int64_t{7}),
         u"18446744073709551615 -9223372036854775808 7"},
        {FormatText(u"%hd %hhu %hhd %hx", 70000, 0x1FF, 0x1FF, 0x12345), u"4464 255 -1 2345"},
        {FormatText(u"[%5d|%-5d|%05d|%+d|% d|%+d]", 42, 42, -42, 5, 5, -5), u"[   42|42   |-0042|+5| 5|-5]"},
        {FormatText(u"[%.3d|%6.3d|%-6.3d|%06.3d|%.0d|%-05d]", 7, -7, 7, 7, 0, 7), u"[007|  -007|007   |   007||7    ]"},
        {FormatText(u"[%*d|%*d|%.*d|%.*d]", 4, 1, -4, 1, 3, 1, -1, 1), u"[   1|1   |001|1]"},
        {FormatText(u"%#06x %d%% %d", 0xAB, 98, true), u"0x00ab 98% 1"},
    });
}

TEST(FormatText, TextConversions_TakeEveryKindOfText) {
    const OwnedString owned(u"owned");
    const FixedText<8> fixed(u"fixed");
    ExpectAll({
        {FormatText(u"%s %s %s %s", owned, fixed, std::u16string(u"text"), u"literal"), u"owned fixed text literal"},
        {FormatText(u"%s %s %S", OwnedString(), static_cast<const char16_t*>(nullptr),
                    static_cast<const char*>(nullptr)),
         u"(null) (null) (null)"},
        {FormatText(u"[%s%s%S]", std::u16string_view(), OwnedString(u""), std::string()), u"[]"},
        {FormatText(u"[%6s|%-6s|%.2s|%4.1s|%.*s]", u"abc", u"abc", u"abc", u"abc", 2, u"abc"),
         u"[   abc|abc   |ab|   a|ab]"},
        {FormatText(u"[%S|%4S|%-4S|%.1S]", "r\xC3\xA9sum\xC3\xA9", "\xC3\xA9", "\xC3\xA9", "\xC3\xA9t\xC3\xA9"),
         u"[r\u00E9sum\u00E9|   \u00E9|\u00E9   |\u00E9]"},
        {FormatText(u"%S %.2S.", "\xF0\x9F\x98\x80\xFF", "a\xF0\x9F\x98\x80"), u"\U0001F600\uFFFD a."},
        {FormatText(u"%.1s%.2s", u"\U0001F600", u"\U0001F600"), u"\U0001F600"},
    });
}

TEST(FormatText, ArrayTooShort_CutsWithTerminatorAndNeverInsideAPair) {
    FixedText<6> text;
    EXPECT_TRUE(FormatText(text, u"%s", u"12345"));
    EXPECT_EQ(text.View(), u"12345");
    EXPECT_FALSE(FormatText(text, u"%d|%d", 1234, 5678));
    EXPECT_EQ(text.View(), u"1234|");
    EXPECT_FALSE(FormatText(text, u"1234%s", u"\U0001F600"));
    EXPECT_EQ(text.View(), u"1234");
    EXPECT_FALSE(FormatText(text, u"%*d", 1'000'000'000, 1));
    EXPECT_EQ(text.View(), u"     ");
}

template <class... Args>
constexpr bool kAccepted = !((formattext_detail::KindOf<Args>() == formattext_detail::Kind::Unsupported) || ...);
enum class Scoped { One };
enum Plain { kOne };
static_assert(!kAccepted<wchar_t> && !kAccepted<Scoped> && !kAccepted<Plain> && !kAccepted<double> &&
                  !kAccepted<char32_t>,
              "these must not reach a format");

}  // namespace
}  // namespace roundup
