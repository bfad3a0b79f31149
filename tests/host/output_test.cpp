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
                                                           {10239, "10.0 KB"},
                                                           {102'348, "99.9 KB"},
                                                           {1'023'487, "999 KB"},
                                                           {1'023'500, "0.98 MB"},
                                                           {1ULL << 40, "1.00 TB"},
                                                           {UINT64_MAX, "16.0 EB"}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(ReadableSize(bytes), text) << bytes;
}

TEST(TextOut, Dates_AreReadOnlyWhenTheyAreDates) {
    EXPECT_EQ(ReadableDate(u"20241231"), "2024-12-31");
    for (const char16_t* odd : {u"20241331", u"20241200", u"2024123", u"202412311", u"3/1/2024", u""}) {
        EXPECT_EQ(ReadableDate(odd), Utf8(odd));
    }
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

TEST(PathChecksum, KnownText_GivesTheCrcOfItsPolynomial) {
    // The check value that the polynomial's catalogue gives for start value 0 relates to this one by the start alone;
    // computed bit by bit here, without the table.
    std::uint64_t expected = UINT64_MAX;
    const std::string text = "123456789";
    for (const char c : text) {
        expected ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) expected = (expected >> 1) ^ ((expected & 1) != 0 ? 0x95AC9329AC4BC9B5U : 0);
    }
    EXPECT_EQ(PathChecksum(text.data(), text.size()), expected);
    EXPECT_EQ(PathChecksum(nullptr, 5), UINT64_MAX);
}

}  // namespace
}  // namespace roundup
