// The passes over hidden records, each on lists made by hand: "main list | what stays hidden".
#include "appcenter/appeunm/hidepasses.h"

#include <gtest/gtest.h>

#include "appcenter/appeunm/rulepasses.h"
#include "appcenter/appeunm/runtimestandin.h"
#include "appcenter/appeunm/suitefolder.h"
#include "appcenter/appeunm/suitegroup.h"
#include "tests/appcenter/reconcile_support.h"
#include "utility/formattext.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using HidePassTest = ReconcileTest;
using List = std::vector<Record>;

constexpr std::u16string_view kDependencies = u"HKLM\\SOFTWARE\\Classes\\Installer\\Dependencies\\";
constexpr std::u16string_view kUserData = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";

std::string RuleBytes(std::u16string_view text) { return TextBytes(u"\xFEFF" + std::u16string(text)); }

TEST_F(HidePassTest, DependencyKeys_LeadFromAHiddenPackageToTheRootThatTheUserSees) {
    const auto provider = [this](std::u16string_view key, std::u16string_view display, std::u16string_view dependent) {
        const std::u16string path = Under(kDependencies, key);
        builder.Text(path, u"DisplayName", display);
        if (!dependent.empty()) builder.Key(path + u"\\Dependents\\" + std::u16string(dependent));
    };
    builder.DenyKey(Under(kDependencies, u"o"));
    provider(u"p0", u"Nobody", u"x");
    provider(u"p1", u"Part One", u"p2");  // a chain of two, the last one a code without a key of its own
    provider(u"p2", u"", CodeText(1));
    provider(u"p3", u"Part Two", u"");  // through the default value
    builder.Text(Under(kDependencies, u"p3"), u"", CodeText(2));
    provider(u"p4", u"Circle", u"p5");
    provider(u"p5", u"", u"p6");
    provider(u"p6", u"", u"p5");
    provider(u"p7", u"Self", u"P7");
    provider(u"p8", u"Unknown", CodeText(9));
    // In a circle the key in hand is the root: the one in front of where the way came in.
    provider(u"p9", u"Looks in", u"pa");
    provider(u"pa", u"", CodeText(3));
    provider(CodeText(3), u"", u"PA");
    provider(CodeText(4), u"Direct", u"");
    EXPECT_EQ(Passed(&AttachByDependency,
                     {{.key = u"a", .code = 1},
                      {.key = u"b", .code = 2},
                      {.key = u"b2", .code = 2},
                      {.key = u"c", .code = 3},
                      {.key = u"d", .code = 4}},
                     {{.key = u"PART ONE"},
                      {.key = u"Part One"},
                      {.key = u"Part Two"},
                      {.key = u"Circle"},
                      {.key = u"Self"},
                      {.key = u"Unknown"},
                      {.key = u"Looks in"},
                      {.key = u"Direct"}}),
              "a(dep:PART ONE) b(dep:Part Two) b2 c(dep:Looks in) d(dep:Direct) | Part One Circle Self Unknown");
}

TEST_F(HidePassTest, SameFolder_IsEqualAboveOrBelowAtAWholeName) {
    EXPECT_EQ(Passed(&AttachSameFolder,
                     {{.key = u"a", .location = u"C:\\Apps\\Tool"}, {.key = u"b", .location = u"D:\\One\\Two"}},
                     {{.key = u"h1", .location = u"c:\\apps\\tool\\part"},
                      {.key = u"h2", .location = u"C:\\Apps\\Toolbox"},
                      {.key = u"h3", .location = u"D:\\One"},
                      {.key = u"h4", .location = u"D:\\On"},
                      {.key = u"h5", .location = u"d:\\one\\two"}}),
              "a(loc:h1) b(loc:h3, loc:h5) | h2 h4");
    // The only one, so that nothing parts its path where the application's ends.
    EXPECT_EQ(
        Passed(&AttachSameFolder, {{.key = u"a", .location = u"C:\\A"}}, {{.key = u"h", .location = u"C:\\A\\B"}}),
        "a(loc:h) | ");
    EXPECT_EQ(Passed(&AttachSameFolder, {{.key = u"a", .location = u"C:\\A"}}, {{.key = u"h", .location = u"C:\\AB"}}),
              "a | h");
}

TEST_F(HidePassTest, LongChainAndLongCircleOfProviders_AreWalkedOnce) {
    constexpr int kLength = 20000;
    List hide;
    for (int i = 0; i < kLength; ++i) {
        const std::u16string key = Under(kDependencies, FormatText(u"chain%05d", i));
        const std::u16string next = i + 1 < kLength ? FormatText(u"chain%05d", i + 1) : CodeText(1);
        builder.Text(key, u"DisplayName", FormatText(u"h%d", i)).Key(key + u"\\Dependents\\" + next);
        const std::u16string circle = Under(kDependencies, FormatText(u"ring%05d", i));
        builder.Text(circle, u"DisplayName", FormatText(u"r%d", i))
            .Text(circle, u"", FormatText(u"ring%05d", (i + 1) % kLength));
        hide.push_back({.key = FormatText(u"h%d", i)});
        hide.push_back({.key = FormatText(u"r%d", i)});
    }
    CAppManager& manager = StartManager();
    CAppList main = MakeList({{.key = u"a", .code = 1}});
    CAppList hidden = MakeList(hide);
    EXPECT_TRUE(Succeeded(AttachByDependency(manager, main, hidden)));
    EXPECT_EQ(main[0]->SubApps.size(), static_cast<std::size_t>(kLength));
    EXPECT_EQ(hidden.size(), static_cast<std::size_t>(kLength));
}

TEST_F(HidePassTest, Runtimes_PairByVersionUpTo2008AndByYearFromThenOn) {
    const auto name = [](const char16_t* year, const char16_t* architecture) {
        return FormatText(u"Microsoft Visual C++ %s Redistributable (%s)", year, architecture);
    };
    EXPECT_EQ(Passed(&AttachRuntimes,
                     {{.key = u"a", .name = name(u"2008", u"x86"), .version = u"9.0.30729.17"},
                      {.key = u"b", .name = name(u"2015-2019", u"x64"), .version = u"14.2"},
                      {.key = u"c", .name = name(u"2015", u"x86"), .version = u"14.0"},
                      {.key = u"e", .name = name(u"2022", u"x64"), .version = u"14.3"},
                      {.key = u"f", .name = name(u"2012", u"x64")}},
                     {{.key = u"h1", .name = name(u"2008", u"x86"), .version = u"9.0"},
                      {.key = u"h2", .name = name(u"2005", u"x86"), .version = u"9.0.30729.17.5"},
                      {.key = u"h3", .name = name(u"2008", u"x64"), .version = u"9.0"},
                      {.key = u"h5", .name = u"MICROSOFT visual c++ 2015 redistributable X64", .version = u"1"},
                      {.key = u"h6", .name = name(u"2015", u"x86"), .version = u"1"},
                      {.key = u"h8", .name = name(u"2012", u"x64"), .version = u"11"},
                      {.key = u"h9", .name = u"Microsoft Visual C++ 2015 x86 Minimum Runtime", .version = u"14.0"},
                      {.key = u"h10", .name = name(u"20151", u"x86"), .version = u"14.0"},
                      {.key = u"h12", .name = name(u"2015", u"x86")}}),
              "a(runtime:h1, runtime:h2) b(runtime:h5) c(runtime:h6) e f | h3 h8 h9 h10 h12");
}

TEST_F(HidePassTest, SharedComponents_FollowTheKeyPathToTheFolderOfAnApplication) {
    int components = 0;
    const auto component = [&](std::u16string_view sid, int code, std::uint32_t type, std::u16string_view path) {
        builder.Value(Under(kUserData, sid) + FormatText(u"\\Components\\%04d", components++),
                      CodeText(code, GuidForm::Packed), type, TextBytes(path));
    };
    component(u"S-1", 1, kRegSz, u"C?\\T\\x.dll");
    component(u"S-1", 2, kRegExpandSz, u"C:\\T\\x.dll");  // another type
    component(u"S-1", 3, kRegSz, u"C:");                  // 6 bytes
    component(u"S-1", 4, kRegSz, u"CX\\T2\\q");           // whatever stands there becomes a colon
    component(u"S-2", 3, kRegSz, u"02:\\SOFTWARE\\x");    // a registry path
    component(u"S-2", 5, kRegSz, u"D:\\other\\y");        // through what the pass itself has attached
    component(u"S-2", 7, kRegSz, std::u16string_view(u"C\0\\T\\q", 6));
    EXPECT_EQ(
        Passed(&AttachBySharedComponent, {{.key = u"a", .location = u"C:\\Other"}, {.key = u"b", .location = u"c:\\t"}},
               {{.key = u"h1", .location = u"D:\\other", .code = 1},
                {.key = u"h2", .code = 2},
                {.key = u"h3", .code = 3},
                {.key = u"h4", .code = 4},
                {.key = u"h5", .code = 5},
                {.key = u"h6"},
                {.key = u"h7", .code = 7}}),
        "a b(shared:h1, shared:h4, shared:h5, shared:h7) | h2 h3 h6");
}

TEST_F(HidePassTest, RuleFiles_HideByPartOfANameAndByKey) {
    builder.HostFile(u"Config\\a.INC", RuleBytes(u"HIDEAPPNAME:Part\r\nHIDEAPPKEY:K1\r\nHIDEAPPNAME:artful\r\n"))
        .HostFile(u"Config\\b.INC", RuleBytes(u"HIDEAPPNAME:PAR\r\nHIDEAPPKEY:k2\r\n"));
    const auto attach = [](CAppManager& manager, CAppList& main, CAppList& hide) {
        RuleBook rules;
        return AttachByRules(manager, main, hide, rules);
    };
    EXPECT_EQ(Passed(attach, {{.key = u"c"}, {.key = u"b"}, {.key = u"a"}},
                     {{.key = u"h1", .name = u"x part y"},
                      {.key = u"k1", .name = u"n"},
                      {.key = u"K2", .name = u"n"},
                      {.key = u"h4", .name = u"Artful"},
                      {.key = u"h5", .name = u"pa rt"}}),
              "c b(rule:h1, rule:K2) a(rule:k1, rule:h4) | h5");
}

TEST_F(HidePassTest, SubAppRules_TakePartsOffTheListAndPutTheirOwnersFirst) {
    constexpr const char16_t* kMsi = u"C:\\1.msi";
    builder.HostFile(u"Config\\a.INC", RuleBytes(u"SUBAPPNAME:Help\r\nSUBAPPKEY:b\r\n"))
        .HostFile(u"Config\\b.INC", RuleBytes(u"SUBAPPNAME:Lang\r\n"));
    EXPECT_EQ(Reconciled({{.key = u"x", .name = u"x HELP lang", .package = kMsi},
                          {.key = u"y", .package = kMsi},
                          {.key = u"b", .name = u"B Help", .package = kMsi},
                          {.key = u"z", .name = u"languages", .package = kMsi},
                          {.key = u"a", .package = kMsi}}),
              "b(rule:x, rule:z) a y");
}

// Catches a location that the adapter and the correction of suite folders both narrow, and rules that were made before.
TEST_F(HidePassTest, LocationThatAnAdapterNarrows_StaysAndCountsForTheOtherAdapters) {
    builder.Folder(u"C:\\Adobe\\Brush Zed\\Brush")
        .HostFile(u"Config\\AppsIniEx.ini", "[AppName]\r\nAdobe=\r\nZed=\r\n")
        .HostFile(u"Config\\Adobe.INCEX", RuleBytes(u"VERSION:X\r\nCOMPONENTSDIR:[ProgramFilesFolder]\\Q"))
        .HostFile(u"Config\\Zed.INCEX", RuleBytes(u"VERSION:X\r\nAPPNAME:a\r\nCOMPONENTSSUBAPPKEY:part"));
    EXPECT_EQ(Reconciled({{.key = u"k", .name = u"Adobe Brush", .location = u"C:\\Adobe"},
                          {.key = u"part", .package = u"C:\\1.msi"}}),
              "k(rule:part)");
    EXPECT_EQ(AppAt(Manager(), 0).pwszInstallLoc.View(), u"C:\\Adobe\\Brush Zed");
}

TEST_F(HidePassTest, CompatibilityLists_AttachInTheirOrder) {
    constexpr const char16_t* kMsi = u"C:\\1.msi";
    const auto list = [this](std::u16string_view name, std::string_view text) {
        builder.HostFile(u"Config\\Compatibility\\" + std::u16string(name), "[component]\r\n" + std::string(text));
    };
    list(u"p.ini", "count=3\r\n1=C\r\n3=a\r\n");
    list(u"c.ini", "1=p\r\n2=b\r\n");  // read although p has taken c: a circle, which nothing shows any more
    EXPECT_EQ(Reconciled({{.key = u"a", .package = kMsi, .size = 5},
                          {.key = u"b", .package = kMsi},
                          {.key = u"p - 2.0", .package = kMsi, .size = 100},
                          {.key = u"c", .name = u"second", .package = kMsi, .size = 7},
                          {.key = u"c", .name = u"third", .package = kMsi, .size = 8}}),
              "p - 2.0(list:c(list:b), list:c, list:a)");
    EXPECT_EQ(
        Reconciled({{.key = u"c", .package = kMsi}, {.key = u"p", .package = kMsi}, {.key = u"q", .package = kMsi}}),
        "q")
        << "lists that name each other";
}

class SuiteTest : public ReconcileTest {
  protected:
    void Modify(std::u16string_view key, std::u16string_view path, bool is32 = false) {
        builder.Text(Under(is32 ? kMachine32Key : kMachineKey, key), u"ModifyPath", path);
    }
};

TEST_F(SuiteTest, Components_GoToEverySuiteThatNoSetupManages) {
    Modify(u"stream", u"C:\\ClickToRun\\setup.exe");
    Modify(u"setup", u"\"C:\\x\\Setup.exe\" /modify");
    Modify(u"package", u"msiexec", true);
    builder.Key(Under(kMachineKey, u"silent"));
    const List main{
        {.key = u"stream", .name = u"Microsoft Office 365"}, {.key = u"setup", .name = u"Microsoft Office X"},
        {.key = u"gone", .name = u"Microsoft Visio"},        {.key = u"package", .name = u"microsoft PROJECT 2016"},
        {.key = u"silent", .name = u"Microsoft Visio"},      {.key = u"other", .name = u"Office"}};
    const List hide{{.key = u"h1", .type = u"COMPONENTS_2013"},
                    {.key = u"h2", .type = u"COMPONENTS_2010"},
                    {.key = u"h3", .type = u"COMPONENTS_2016"},
                    {.key = u"h4", .type = u"OFFICE_2016"}};
    EXPECT_EQ(Passed(&GroupSuiteComponents, main, hide),
              "stream(suite:h1, suite:h3) setup gone package(suite:h1, suite:h3) silent(suite:h1, suite:h3) other | "
              "h2 h4");
    EXPECT_EQ(Passed(&GroupSuiteComponents, {{.key = u"other"}}, hide), "other | h2 h4") << "gone without a suite";
}

TEST_F(SuiteTest, Siblings_OfOneYearShareTheirPartsOnce) {
    for (const auto* key : {u"a", u"b", u"c", u"d"}) Modify(key, u"msiexec");
    Modify(u"s", u"ClickToRun");
    const Record parts[] = {{.key = CodeText(1), .code = 1},
                            {.key = CodeText(2), .package = u"C:\\2.msi", .code = 2},
                            {.key = CodeText(3), .code = 3},
                            {.key = u"no code", .code = 4}};
    const List main{{.key = u"a", .name = u"Microsoft Office 2013", .claims = {3, 9}, .parts = {parts[0], parts[3]}},
                    {.key = u"b", .name = u"Microsoft Visio 2013", .parts = {parts[1]}},
                    {.key = u"c", .name = u"Microsoft Office 2019", .parts = {parts[2]}},
                    {.key = u"s", .name = u"Microsoft Project 2013", .parts = {parts[2]}},
                    {.key = u"d", .name = u"Microsoft Project 2013", .parts = {parts[0], parts[2]}}};
    const std::string one = ToUtf8(CodeText(1));
    const std::string two = ToUtf8(CodeText(2));
    const std::string three = ToUtf8(CodeText(3));
    EXPECT_EQ(Passed(&GroupSuiteSiblings, main, {}), "a(" + one + ", no code, suite:" + two + ", suite:" + three +
                                                         ") b(" + two + ", suite:" + one + ", suite:" + three + ") c(" +
                                                         three + ") s(" + three + ") d(" + one + ", " + three +
                                                         ", suite:" + two + ") | ");
}

// Which folder is chosen is the business of the adapters' tests; here the ways through mount points count.
TEST_F(SuiteTest, Folder_IsTheProductsOwnAlsoBehindMountPoints) {
    builder.Folder(u"C:\\Adobe\\ADOBE PHOTOSHOP CS6")
        .Folder(u"E:\\Apps\\Adobe Bridge")
        .Reparse(u"C:\\Linked", u"E:\\Apps")
        .Reparse(u"C:\\Adobe\\Bridge CS6", u"E:\\Apps\\Adobe Bridge");
    const std::tuple<std::u16string, std::u16string, std::u16string_view, std::u16string_view> cases[] = {
        {u"Adobe Photoshop CS6", u"C:\\Adobe", u"C:\\Adobe\\ADOBE PHOTOSHOP CS6", u"C:\\Adobe\\ADOBE PHOTOSHOP CS6"},
        {u"Adobe Bridge CS6", u"C:\\Adobe", u"C:\\Adobe\\Bridge CS6", u"E:\\Apps\\Adobe Bridge"},
        {u"Adobe Bridge", u"C:\\Linked", u"C:\\Linked\\Adobe Bridge", u"E:\\Apps\\Adobe Bridge"},
        {u"Photoshop CS6", u"C:\\Adobe", u"C:\\Adobe", u""},
    };
    StartManager();
    for (const auto& [name, location, result, real] : cases) {
        const RefPtr<CApp> app = MakeApp({.key = u"k", .name = name, .location = location});
        CorrectSuiteFolder(*app);
        EXPECT_EQ(app->pwszInstallLoc.View(), result);
        EXPECT_EQ(app->pwszRealInstallLoc.View(), real);
    }
}

}  // namespace
}  // namespace roundup
