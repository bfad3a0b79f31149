// What the program makes of applications and texts, without a process.

#include <gtest/gtest.h>

#include <algorithm>

#include "appcenter/app/app.h"
#include "host/appjson.h"
#include "host/terminal.h"
#include "host/textout.h"
#include "utility/pathchecksum.h"

namespace roundup {
namespace {

using namespace host;

TEST(TextOut, Sizes_KeepThreeDigitsAndChangeUnitInTime) {
    const std::pair<std::uint64_t, const char*> cases[] = {{0, "0 B"},
                                                           {1023, "1023 B"},
                                                           {1024, "1.00 KB"},
                                                           {102'348, "99.9 KB"},
                                                           {1'023'487, "999 KB"},
                                                           {1'023'500, "0.98 MB"},
                                                           {UINT64_MAX, "16.0 EB"}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(ReadableSize(bytes), text) << bytes;
}

TEST(TextOut, Fit_CountsColumnsNotBytesAndNeverCutsACharacter) {
    PrepareStreams();
    const std::string wide = "日本語";  // two columns each
    EXPECT_EQ(Fit(wide, 8), wide + "  ");
    EXPECT_EQ(Fit(wide, 6), wide);
    EXPECT_EQ(Fit(wide, 5), "日本…");
    EXPECT_EQ(Fit(wide, 4), "日… ");
    EXPECT_EQ(Fit("e\xCC\x81t\xC3\xA9", 5, true), "  e\xCC\x81t\xC3\xA9");
    EXPECT_EQ(Fit("ab", 0), "");
}

TEST(AppJson, DeepForest_IsWrittenWholeWithoutDescendingTheStack) {
    constexpr int kDepth = 20'000;
    RefPtr<CApp> root = RefPtr<CApp>::Adopt(new CApp);
    CApp* bottom = root.Get();
    for (int i = 0; i < kDepth; ++i) {
        CApp* sub = new CApp;
        bottom->SubApps.push_back(RefPtr<IApp>::Adopt(sub));
        bottom = sub;
    }
    ASSERT_TRUE(bottom->pwszName.Assign(u"bottom \"quoted\""));
    std::string json;
    WriteAppJson(*root, 7, [&](std::string_view text) { json += text; });
    EXPECT_EQ(json.rfind("{\"index\":7,", 0), 0U);
    EXPECT_NE(json.find("\"bottom \\\"quoted\\\"\""), std::string::npos);
    EXPECT_EQ(std::count(json.begin(), json.end(), '{'), kDepth + 1);
    EXPECT_EQ(std::count(json.begin(), json.end(), '}'), kDepth + 1);
}

// Of the check text of all catalogues of polynomials, computed bit by bit.
TEST(PathChecksum, KnownText_HasTheCrcOfItsPolynomial) { EXPECT_EQ(PathChecksum("123456789", 9), 0xCAA717168609F281U); }

}  // namespace
}  // namespace roundup
