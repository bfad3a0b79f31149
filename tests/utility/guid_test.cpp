#include "utility/guid.h"

#include <gtest/gtest.h>

#include <string>

namespace roundup {
namespace {

// One value in every form, written out by hand.
constexpr Guid kSample{
    {0x90, 0x14, 0x01, 0x00, 0x3D, 0x00, 0xFE, 0xCA, 0x00, 0x00, 0x00, 0x00, 0x0F, 0xF1, 0xCE, 0xAB}};
constexpr std::u16string_view kTexts[] = {
    u"{00011490-003D-CAFE-0000-00000FF1CEAB}",
    u"{00011490-003D-CAFE-000000000FF1CEAB}",
    u"901401003D00FECA000000000FF1CEAB",
    u"09411000D300EFAC00000000F01FECBA",
};

TEST(GuidTest, EveryForm_ReadsAndWritesTheSampleInEitherCase) {
    for (std::uint8_t form = 0; form < 4; ++form) {
        const std::u16string text(kTexts[form]);
        EXPECT_EQ(FormatGuid(kSample, GuidForm{form}).View(), text);
        EXPECT_EQ(ParseGuid(text, GuidForm{form}), kSample);
        std::u16string lower = text;
        for (char16_t& c : lower) c = static_cast<char16_t>(c >= u'A' && c <= u'F' ? c + 0x20 : c);
        EXPECT_EQ(ParseGuid(lower, GuidForm{form}), kSample);
    }
}

TEST(GuidTest, DamagedText_GivesNil) {
    for (std::uint8_t form = 0; form < 4; ++form) {
        const std::u16string text(kTexts[form]);
        EXPECT_TRUE(ParseGuid({}, GuidForm{form}).IsNil());
        EXPECT_TRUE(ParseGuid(text + u"0", GuidForm{form}).IsNil());
        EXPECT_TRUE(ParseGuid(text.substr(1), GuidForm{form}).IsNil());
        // Each place in turn holds what belongs at none, the braces and the dashes included.
        for (std::size_t i = 0; i < text.size(); ++i) {
            for (const char16_t wrong : {u'G', u'x', u' ', u'\0', u'\xFF21', u'@', u'/', u':'}) {
                std::u16string damaged = text;
                damaged[i] = wrong;
                EXPECT_TRUE(ParseGuid(damaged, GuidForm{form}).IsNil()) << int{form} << " at " << i;
            }
        }
    }
}

}  // namespace
}  // namespace roundup
