// Which applications a listing shows, and what a comparison of two catalogues finds.
#include <gtest/gtest.h>

#include <cstring>

#include "appcenter/app/app.h"
#include "host/diffsource.h"
#include "host/listfilter.h"
#include "host/report.h"

namespace roundup::host {
namespace {

RefPtr<CApp> MakeApp(const char16_t* name, const char16_t* publisher, std::int64_t size, const char16_t* date,
                     std::uint64_t flags = 0) {
    RefPtr<CApp> app = RefPtr<CApp>::Adopt(new CApp);
    EXPECT_TRUE(app->pwszName.Assign(name) && app->pwszPublisher.Assign(publisher));
    EXPECT_TRUE(app->pwszInstallDate.Assign(date));
    app->llEstimatedSize = size;
    app->qwFlags = flags;
    return app;
}

TEST(ListFilter, ConditionsHold_TogetherAtEveryDepthAndKeepTheNumbers) {
    const RefPtr<CApp> notes = MakeApp(u"Otter Notes", u"Otter Works", 2048, u"20240301");
    notes->SubApps.push_back(MakeApp(u"Otter Fix 7", u"Otter Works", 10, u"20250101", AppFlags::kNotTopLevel));
    const RefPtr<CApp> paint = MakeApp(u"ÄRA Paint", u"Lumen", 1 << 20, u"20231231", AppFlags::kWindowsInstaller);
    const RefPtr<CApp> odd = MakeApp(u"odd", u"", -1, u"3/1/2024");
    const std::vector<const IApp*> apps{notes.Get(), paint.Get(), odd.Get()};
    struct Case {
        ListFilter filter;
        std::vector<std::size_t> shown;
    };
    const Case cases[] = {
        {{}, {0, 1, 2}},
        {{.name = "fix"}, {0}},
        {{.name = "ära*"}, {1}},
        {{.name = "fix", .largerThan = 10}, {}},  // no two applications fulfil one filter together
        {{.kind = Kind::Msi}, {1}},
        {{.kind = Kind::Update}, {0}},
        {{.largerThan = 2047}, {0, 1}},
        {{.since = "20240301"}, {0}},
        {{.sort = SortBy::Size}, {1, 0, 2}},
    };
    for (const Case& one : cases) {
        std::vector<std::size_t> shown;
        for (const NumberedApp& app : SelectApps(apps, one.filter)) shown.push_back(app.index);
        EXPECT_EQ(shown, one.shown) << &one - cases;
    }
    EXPECT_EQ(TotalLine(SelectApps(apps, {.kind = Kind::Msi}), apps), "1 of 3 applications, 1.00 MB");
}

TEST(Report, NamesOfOthers_StayTextAndAnOddIconIsLeftOut) {
    const RefPtr<CApp> app = MakeApp(u"</table><script>alert(1)</script>", u"\"><img src=x onerror=y>&amp;", 3, u"<b>");
    app->pIconData = std::make_unique<std::byte[]>(1 << 20);
    app->dwIconDataSize = 1 << 20;
    const std::string page = MakeReport({{app.Get(), 0}}, "<i>", "<u>");
    for (const char* odd : {"<script>alert", "<img", "<b>", "<i>", "<u>"}) {
        EXPECT_EQ(page.find(odd), std::string::npos) << odd;
    }
    EXPECT_NE(page.find("&lt;/table&gt;&lt;script&gt;alert(1)"), std::string::npos);
    EXPECT_NE(page.find("&quot;&gt;&lt;img src=x onerror=y&gt;&amp;amp;"), std::string::npos);
}

TEST(Report, Tree_IsWrittenWholeWithTheIconOfEachPart) {
    const std::pair<std::string_view, std::string> icons[] = {
        {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}};  // RFC 4648
    const RefPtr<CApp> whole = MakeApp(u"whole", u"", 0, u"");
    for (const auto& [bytes, text] : icons) {
        RefPtr<CApp> part = MakeApp(u"part", u"", 0, u"");
        part->pIconData = std::make_unique<std::byte[]>(bytes.size());
        std::memcpy(part->pIconData.get(), bytes.data(), bytes.size());
        part->dwIconDataSize = static_cast<std::uint32_t>(bytes.size());
        whole->SubApps.push_back(std::move(part));
    }
    const std::string page = MakeReport({{whole.Get(), 0}}, "", "");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>") && page.find(">whole<") != std::string::npos);
    for (const auto& [bytes, text] : icons)
        EXPECT_NE(page.find(";base64," + text + "\">part<"), std::string::npos) << text;
}

TEST(ListFilter, SizesAndDays_AreReadStrictly) {
    const std::pair<const char*, std::optional<std::uint64_t>> sizes[] = {
        {"10", 10},  {"1.5K", 1536},   {"2 mb", 2 << 20},     {"1B", 1},  {"", std::nullopt}, {"-1", {}},
        {"10X", {}}, {"9999999T", {}}, {"1KK", std::nullopt}, {"nan", {}}};
    for (const auto& [text, bytes] : sizes) EXPECT_EQ(ParseSize(text), bytes) << text;
    EXPECT_EQ(ParseDay("2024-02-29"), "20240229");
    for (const char* text : {"2023-02-29", "2024-13-01", "2024022", "2024/02/29", "20-240229"}) {
        EXPECT_EQ(ParseDay(text), std::nullopt) << text;
    }
}

TEST(Diff, PairsKeysThenNames_AndTellsEachChangeOnce) {
    const char* const before =
        R"({"applications":[{"key":"A","name":"Anvil","version":"1","size":5,"subApplications":[{"key":"S","name":"Sub"}]},
        {"key":"{1}","name":"Brush","publisher":"P","version":"1"},{"key":"C","name":"Chisel"}],
        "packages":[{"key":"Pad_1_x64__f","family":"Pad_f","name":"Pad","version":"65536"}]})";
    const char* const after =
        R"({"applications":[{"key":"a","name":"Anvil","version":"2","size":5},{"key":"{2}","name":"BRUSH","publisher":"p",
        "version":"2"},{"key":"D","name":"Chisel","publisher":"other"}],
        "packages":[{"key":"Pad_2_x64__f","family":"pad_f","name":"Pad","version":"131072"}]})";
    std::vector<DiffEntry> from, to;
    ASSERT_TRUE(ParseCatalogueJson(before, from) && ParseCatalogueJson(after, to));
    const CatalogueDiff diff = CompareCatalogues(from, to);
    std::string told;
    for (const DiffEntry& entry : diff.removed) told += "-" + entry.key + " ";
    for (const DiffEntry& entry : diff.added) told += "+" + entry.key + " ";
    for (const auto& change : diff.changed) {
        told += "~" + change.from.key;
        for (const std::string& field : change.fields) told += "," + field;
        told += " ";
    }
    EXPECT_EQ(told, "-S -C +D ~A,key,version ~{1},key,name,publisher,version ~Pad_1_x64__f,key,version ");
    for (const char* text : {"", "[]", "{", "{\"applications\":[]}", "{\"applications\":[1],\"packages\":[]}"}) {
        EXPECT_FALSE(ParseCatalogueJson(text, from)) << text;
    }
}

}  // namespace
}  // namespace roundup::host
