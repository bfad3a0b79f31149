#include "platform/recorded/wineshortname.h"

#include <gtest/gtest.h>

namespace roundup {
namespace {

// The first names are those that installers under Wine 8.0 wrote into a registry.
TEST(WineShortName, IsTheOneThatWineMakes) {
    const struct {
        const char16_t* name;
        const char16_t* shortName;
    } cases[] = {
        {u"Program Files", u"PROG~FBU"},
        {u"PROGRAM files", u"PROG~FBU"},
        {u"Program Files (x86)", u"PROG~5P2"},
        {u"Osmundgate Link", u"OSMU~JI0"},
        {u"uninstall.exe", u"UNIN~IQ1.EXE"},
        {u"\x03B1\x03C3\x03C4\x03AD\x03C1\x03B5\x03C2.exe", u"____~WCZ.EXE"},
        {u"read.me", u""},
        {u"12345678.abc", u""},
        {u"", u""},
    };
    for (const auto& one : cases) EXPECT_EQ(WineShortName(one.name), one.shortName);
    for (const char16_t* name :
         {u"a b", u"x.html", u"two.dots.txt", u".profile", u"ends.", u"\u0394.txt", u"a+b=c.tar.gz"}) {
        const std::u16string made = WineShortName(name);
        EXPECT_TRUE(LooksLikeWineShortName(made)) << ::testing::PrintToString(made);
        EXPECT_LE(made.size(), 12U);
        EXPECT_EQ(WineShortName(made), u"") << "it has none itself";
    }
}

}  // namespace
}  // namespace roundup
