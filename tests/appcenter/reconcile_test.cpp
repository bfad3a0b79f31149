// Reconciliation of whole lists: the rows of the decision table in front of the passes, and those behind them.
#include "appcenter/appeunm/reconcile.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "appcenter/appeunm/attachclaims.h"
#include "appcenter/appeunm/locationpasses.h"
#include "appcenter/appeunm/mergelists.h"
#include "appcenter/appeunm/rulepasses.h"
#include "tests/appcenter/reconcile_support.h"
#include "utility/formattext.h"
#include "utility/utf.h"

namespace roundup {
namespace {

constexpr const char16_t* kMsi = u"C:\\W\\1.msi";

TEST_F(ReconcileTest, Lists_BecomeTheForestOfTheTable) {
    const struct {
        const char* why;
        std::vector<Record> uninstalls;
        std::vector<Record> installs;
        std::string forest;
    } cases[] = {
        {"one key and one name are one application, whatever their case; another name is another application",
         {{.key = u"Tool", .location = u"C:\\T"},
          {.key = u"TOOL", .name = u"tool", .package = kMsi},
          {.key = u"tool", .name = u"Other", .location = u"C:\\O"}},
         {},
         "Tool tool"},
        {"install records give what their entry lacks, by code, or by package when they have no code",
         {{.key = u"a", .code = 1},
          {.key = u"b", .package = kMsi, .code = 2},
          {.key = u"c", .name = u"c", .package = u"C:\\W\\3.msi"}},
         {{.name = u"ia", .package = u"C:\\W\\9.msi", .code = 1},
          {.name = u"ib", .location = u"C:\\B", .package = u"c:\\w\\1.MSI"},
          {.name = u"ic", .location = u"C:\\C", .package = u"C:\\W\\3.msi"},
          {.name = u"none", .location = u"C:\\N", .package = u"C:\\W\\7.msi", .code = 7}},
         "a b c"},
        {"a patch takes key and name of the first product that claims it; a second one finds the claim used up",
         {{.key = u"a", .package = kMsi, .code = 1, .claims = {5}}, {.key = u"b", .package = kMsi, .claims = {5}}},
         {{.name = u"-", .package = u"C:\\W\\5.MSP", .code = 5},
          {.name = u"P", .package = u"C:\\W\\5.msp", .code = 5},
          {.name = u"Q", .package = u"C:\\W\\5.msp", .code = 5}},
         "a(code:a) b(code:b)"},
        {"a parent's name finds the first application of that name; an application is not its own parent",
         {{.key = u"u", .package = kMsi, .parent = u"TOOL", .hidden = true},
          {.key = u"a", .name = u"Tool", .package = kMsi},
          {.key = u"b", .name = u"Tool", .package = kMsi},
          {.key = u"s", .name = u"S", .package = kMsi, .parent = u"s"}},
         {},
         "a(name:u) b s"},
        {"an entry without anything to point at lives on through its parts alone",
         {{.key = u"a", .claims = {3}}, {.key = u"b", .package = kMsi, .code = 3}, {.key = u"c"}},
         {},
         "a(code:b)"},
        {"hidden entries hang below the first whose location theirs begins with, by whatever character it goes on; "
         "what hangs there counts too, in a folder of their own they go",
         {{.key = u"h", .location = u"C:\\Apps", .hidden = true},
          {.key = u"i", .location = u"C:\\Applied\\x", .hidden = true},
          {.key = u"j", .location = u"D:\\own", .hidden = true},
          {.key = u"a", .location = u"c:\\app"},
          {.key = u"k", .location = u"D:\\part\\x", .hidden = true},
          {.key = u"b", .location = u"C:\\App", .claims = {4}},
          {.key = u"p", .location = u"D:\\part", .code = 4}},
         {},
         "a(loc:h, loc:i) b(code:p, loc:k)"},
    };
    for (const auto& c : cases) EXPECT_EQ(Reconciled(c.uninstalls, c.installs), c.forest) << c.why;
}

TEST_F(ReconcileTest, WhatLeaves_IsLoggedByNameKeyAndPackage) {
    Reconciled({{.key = u"h", .name = u"H", .location = u"D:\\own", .hidden = true}},
               {{.name = u"-", .package = u"C:\\W\\7.msi", .code = 7}});
    EXPECT_EQ(LogLines(u"[TRC] "),
              "[TRC] remain installApp msi : C:\\W\\7.msi\n[TRC] remain hideApp name : H\n"
              "[TRC] remain hideApp key : h\n");
}

TEST_F(ReconcileTest, MergedRecords_KeepWhatIsThereAndAddUp) {
    CAppManager& manager = StartManager();
    AppList installs;
    AppList uninstalls;
    for (const std::uint64_t flag : {AppFlags::k64Bit, AppFlags::kCurrentUser}) {
        auto app = MakeApp({.key = u"a", .code = 1, .version = flag == AppFlags::k64Bit ? u"1" : u"2"});
        app->qwFlags = flag;
        app->dwOrigins = flag == AppFlags::k64Bit ? AppOrigin::kMachine64 : AppOrigin::kUser32;
        uninstalls.emplace_back(std::move(app));
    }
    installs.emplace_back(MakeApp({.name = u"patched", .package = kMsi, .code = 1, .claims = {5}}));
    installs.emplace_back(MakeApp({.name = u"-", .package = u"C:\\W\\5.msp", .code = 5}));
    Reconcile(manager, installs, uninstalls);
    ASSERT_EQ(manager.Applications().size(), 1U);
    const CApp& app = AppAt(manager, 0);
    EXPECT_EQ(app.qwFlags, AppFlags::k64Bit | AppFlags::kCurrentUser);
    EXPECT_EQ(app.dwOrigins, AppOrigin::kMachine64 | AppOrigin::kUser32 | AppOrigin::kInstaller);
    EXPECT_EQ(app.pwszVersion.View(), u"1");
    EXPECT_TRUE(app.RelatedCodes.empty()) << "the patch has used its claim up";
    const auto& patch = static_cast<const CApp&>(*app.SubApps.at(0));
    EXPECT_EQ(patch.pwszName.View(), u"a");
    EXPECT_EQ(patch.pwszKeyString.View(), u"a");
    EXPECT_EQ(patch.pwszParentKeyName.View(), u"a");
}

// A product without key and name cannot stay, but its patch shows what it was given.
TEST_F(ReconcileTest, PatchOfAProductWithoutKey_TakesItsCodeAsKey) {
    auto product = MakeApp({.name = u"-", .claims = {5}});
    CAppList main{product};
    CAppList installs = MakeList({{.name = u"-", .package = u"C:\\W\\5.msp", .code = 5}});
    AttachPatches(StartManager(), main, installs);
    const auto& patch = static_cast<const CApp&>(*product->SubApps.at(0));
    EXPECT_EQ(patch.pwszKeyString.View(), CodeText(5));
    EXPECT_TRUE(patch.pwszName.IsEmpty());
}

// Claims in circles of one to a thousand: no way leads into them, so they go, each with a line in the log.
TEST_F(ReconcileTest, CirclesOfParents_LeaveTheCatalogueAndLeakNothing) {
    for (const int length : {2, 3, 1000}) {
        std::vector<Record> records{{.key = u"outside", .package = kMsi}};
        for (int i = 0; i < length; ++i) {
            const std::u16string name = FormatText(u"n%d", i);
            records.push_back({.key = name, .package = kMsi, .parent = FormatText(u"n%d", (i + 1) % length)});
        }
        records.push_back({.key = u"tail", .package = kMsi, .parent = u"n0"});
        EXPECT_EQ(Reconciled(records), "outside");
        const std::string log = LogLines(u"recursion dislodge App: n");
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
    }
    EXPECT_EQ(Reconciled({{.key = u"a", .package = kMsi, .code = 1, .claims = {2}},
                          {.key = u"b", .package = kMsi, .code = 2, .claims = {1}}}),
              "");
}

TEST_F(ReconcileTest, ChainOfAHundredThousandParents_HangsBelowOneAndComesDown) {
    constexpr int kDepth = 100000;
    CAppManager& manager = StartManager();
    AppList installs;
    AppList uninstalls;
    for (int i = 0; i < kDepth; ++i) {
        uninstalls.emplace_back(MakeApp({.key = FormatText(u"k%d", i),
                                         .location = i == 0 ? u"C:\\A" : u"",
                                         .package = kMsi,
                                         .parent = i == 0 ? u"" : FormatText(u"k%d", i - 1)}));
    }
    uninstalls.emplace_back(MakeApp({.key = u"h", .location = u"C:\\A\\b", .hidden = true}));
    Reconcile(manager, installs, uninstalls);
    ASSERT_EQ(manager.Applications().size(), 1U);
    EXPECT_EQ(AppAt(manager, 0).SubApps.size(), 2U);
    manager.Applications().clear();
}

TEST_F(ReconcileTest, StoppedRun_ReleasesEverything) {
    CAppManager& manager = StartManager();
    AppList installs;
    AppList uninstalls;
    uninstalls.emplace_back(MakeApp({.key = u"a", .package = kMsi}));
    const RefPtr<IApp> held = uninstalls[0];
    manager.Stop();
    Reconcile(manager, installs, uninstalls);
    EXPECT_TRUE(manager.Applications().empty());
    EXPECT_EQ(held->AddRef(), 2U) << "nobody else holds it";
    held->Release();
}

}  // namespace
}  // namespace roundup
