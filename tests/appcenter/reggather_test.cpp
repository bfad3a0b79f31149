// The registry gather of an application: search words, items and folders, the components of a location.
#include <gtest/gtest.h>

#include <numeric>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appreggather/appreggather.h"
#include "appcenter/appreggather/commentreggather.h"
#include "appcenter/appreggather/noisewords.h"
#include "tests/support/machinetest.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

class RegGatherTest : public MachineTest {};

std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

CApp& Name(CApp& app, std::u16string_view name, std::u16string_view key = {}, std::u16string_view publisher = {}) {
    app.pwszName = OwnedString(name);
    app.pwszKeyString = OwnedString(key);
    app.pwszPublisher = OwnedString(publisher);
    return app;
}

// Root M is that of the machine, U that of the user; a path that comes for both in turn is one line, MU.
std::vector<std::string> Items(const std::vector<RuleRegItem>& items) {
    std::vector<std::string> lines;
    for (const RuleRegItem& item : items) {
        EXPECT_EQ(item.bRedirection, 0U);
        const std::string path = " " + Narrow(item.path);
        if (item.root == RuleRoot::kCurrentUser && !lines.empty() && lines.back() == "M" + path) {
            lines.back() = "MU" + path;
        } else {
            lines.push_back((item.root == RuleRoot::kLocalMachine ? "M" : "U") + path);
        }
    }
    return lines;
}

TEST_F(RegGatherTest, Tokens_AreTheRunsOfWholeWordsAndThenAllOfThemWithADot) {
    const struct {
        std::u16string_view name, key, publisher;
        std::string_view tokens;
        std::uint32_t microsoft;
    } cases[] = {
        {u"Foo-Bar 2", u"", u"",
         "FooBar 2|Foo|Foo-Bar 2|FooBar|Bar 2|Foo-Bar|Bar|"
         ".FooBar 2|.Foo|.Foo-Bar 2|.FooBar|.2|.Bar 2|.Foo-Bar|.Bar|",
         0},
        {u"Tool Box Pro", u"BOXY", u"",
         "Tool Box Pro|BOXY|Box Pro|Tool Box|Pro|Box|.Tool Box Pro|.BOXY|.Tool|.Box Pro|.Tool Box|.Pro|.Box|", 0},
        // Seeds are queued even when they are equal; what stands behind the "-" is an empty part.
        {u"Desk-", u"", u"desk", "Desk|Desk|Desk-|.Desk|.Desk-|.|", 0},
        {u"Setup", u"{Ab}", u"12.5", "{Ab}|Ab|.Setup|.{Ab}|.12.5|.Ab|", 0},
        {u"Kit", u"", u"MICROSOFT Corp", "Kit|MICROSOFT Corp|Corp|.Kit|.MICROSOFT Corp|.MICROSOFT|.Corp|", 1},
        {u"a/microsofty", u"", u"", "a/microsofty|a|microsofty|.a/microsofty|.a|.microsofty|", 1},
        {u"", u"", u"", "", 0},
    };
    for (const auto& c : cases) {
        CApp app;
        std::vector<NameToken> tokens;
        std::uint32_t microsoft = 0;
        TokeniseApp(Name(app, c.name, c.key, c.publisher), tokens, microsoft);
        std::string text;
        for (const NameToken& token : tokens) {
            text += Narrow(token.pwszText) + "|";
            EXPECT_EQ(token.dwLength, token.pwszText.Length());
        }
        EXPECT_EQ(text, c.tokens);
        EXPECT_EQ(microsoft, c.microsoft) << text;
    }
}

TEST_F(RegGatherTest, NamesOfThousandsOfWords_EndWithinTheirBudgetsAndStillGiveShortTokens) {
    std::u16string words, braces(15000, u'{'), same;
    for (int i = 0; words.size() < 30000; ++i) words += FormatText(u"w%d-", i);
    for (int i = 0; i < 15000; ++i) same += i % 2 != 0 ? u"_a" : u"_b";
    braces.append(15000, u'}');
    for (const std::u16string& name : {words, braces, same}) {
        CApp app;
        std::vector<NameToken> tokens;
        std::uint32_t microsoft = 0;
        TokeniseApp(Name(app, name), tokens, microsoft);
        const auto all =
            std::accumulate(tokens.begin(), tokens.end(), std::uint64_t{0},
                            [](std::uint64_t sum, const NameToken& token) { return sum + token.dwLength; });
        EXPECT_LE(all, 2 * (kMostTokenText + 8 * name.size()));
        EXPECT_GE(tokens.size(), 20U);
    }
    // Fifty words are no hostile name: each of their 1275 runs is there, and each with a dot.
    CApp app;
    std::u16string sane;
    for (int i = 0; i < 50; ++i) sane += (i == 0 ? u"w" : u" w") + FormatText(u"%d", i);
    std::vector<NameToken> tokens;
    std::uint32_t microsoft = 0;
    TokeniseApp(Name(app, sane), tokens, microsoft);
    EXPECT_EQ(tokens.size(), 2U * 1275);
}

TEST_F(RegGatherTest, NoiseWords_FoldAsciiAlone) {
    const struct {
        std::u16string_view text;
        bool noise;
    } cases[] = {{u"", true},     {u"1.0.5", true},      {u"SDK", true},       {u"Italian\\ITALIANO", true},
                 {u"-", true},    {u"Tool Box", false},  {u"1.0b", false},     {u"\u212Ait", false},
                 {u".LTD", true}, {u"softwares", false}, {u"Publishing", true}};
    for (const auto& c : cases) EXPECT_EQ(IsNoiseWord(c.text), c.noise) << Narrow(c.text);
    EXPECT_TRUE(IsNoiseWord(nullptr));
}

// One thing of each kind on the machine, all of them the application's.
void AddOfEachKind(MachineBuilder& builder) {
    constexpr std::u16string_view kClasses = u"HKLM\\SOFTWARE\\Classes\\";
    const auto text = [&](std::u16string_view path, std::u16string_view value) {
        builder.Text(std::u16string(kClasses).append(path), u"", value);
    };
    text(u"CLSID\\{C1}\\InprocServer32", u"C:\\App\\srv.dll");
    text(u"CLSID\\{C1}\\ProgID", u"App.One");
    text(u"TypeLib\\{T1}\\1.0\\0\\win32", u"C:\\App\\srv.dll");
    text(u"Interface\\{I1}\\TypeLib", u"{T1}");
    text(u"App.Doc\\shell\\open\\command", u"\"C:\\App\\app.exe\" \"%1\"");
    text(u".doc1", u"App.Doc");
    builder.Text(u"HKLM\\SYSTEM\\CurrentControlSet\\services\\AppSvc", u"ImagePath", u"\"C:\\App\\app.exe\" -run");
    builder.Text(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\app1.exe", u"", u"C:\\App\\app.exe");
    builder.Key(u"HKCU\\Software\\Otter Notes");
    const std::u16string dependencies = std::u16string(kClasses) + u"Installer\\Dependencies\\";
    builder.Text(dependencies + u"a", u"DisplayName", u"Other")
        .Text(dependencies + u"b", u"DisplayName", u"OTTER notes");
    builder.Text(dependencies + u"c", u"DisplayName", u"Otter Notes");
    builder.Folder(u"C:\\Users\\User\\AppData\\Roaming\\Otter").Folder(u"C:\\ProgramData\\Vendor\\Windows");
    builder.Folder(u"C:\\Program Files\\Common Files\\OtterShared").File(u"C:\\App\\app.exe").File(u"C:\\App\\srv.dll");
}

TEST_F(RegGatherTest, Gather_BuildsItemsInTheOrderOfTheSetsAndFoldersOfEveryDataFolder) {
    AddOfEachKind(builder);
    Start();
    CApp app;
    Name(app, u"Otter Notes", u"Vendor/Windows");
    for (const char16_t* const file : {u"c:\\app\\APP.exe", u"C:\\App\\srv.dll"})
        app.MakeGathered().FilePaths.Add(file);
    CAppRegGather gather(app);
    std::vector<OwnedString> native, x86;
    gather.GetCommonFolders(native, x86);
    ASSERT_EQ(native.size(), 1U);
    EXPECT_EQ(Narrow(native[0]), "C:\\Program Files\\Common Files\\OtterShared");
    EXPECT_EQ(Narrow(x86.at(0)), "C:\\Program Files (x86)\\Common Files\\OtterShared");

    gather.RunGather(RegGatherScan::kAll);
    EXPECT_EQ(Items(gather.RegItems),
              (std::vector<std::string>{
                  R"(MU SOFTWARE\Classes\AppID\App.One)",
                  R"(MU SOFTWARE\Classes\CLSID\{C1})",
                  R"(MU SOFTWARE\Microsoft\Windows\CurrentVersion\Shell Extensions\Approved\\{C1})",
                  R"(MU SOFTWARE\Classes\TypeLib\{T1})",
                  R"(MU SOFTWARE\Classes\Interface\{I1})",
                  R"(M SYSTEM\CurrentControlSet\services\AppSvc)",
                  R"(MU SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\app1.exe)",
                  R"(MU SOFTWARE\Classes\Applications\app1.exe)",
                  R"(MU SOFTWARE\Classes\.doc1)",
                  R"(MU Software\Microsoft\Windows\CurrentVersion\Explorer\FileExts\.doc1)",
                  R"(MU SOFTWARE\Classes\App.Doc)",
                  R"(MU SOFTWARE\Classes\*\shellex\ContextMenuHandlers\App.Doc)",
                  R"(MU Software\Microsoft\Windows\Shell\Associations\UrlAssociations\App.Doc)",
                  R"(MU SOFTWARE\Classes\Drive\shellex\DragDropHandlers\App.Doc)",
                  R"(MU SOFTWARE\Classes\Folder\ShellEx\ContextMenuHandlers\App.Doc)",
                  R"(MU SOFTWARE\Classes\Folder\ShellEx\DragDropHandlers\WinRAR\App.Doc)",
                  R"(MU SOFTWARE\Otter Notes)",
                  R"(M SOFTWARE\Classes\Installer\Dependencies\b)",
              }));
    // "Windows" is noise for the vendor's folder, so only two names remain, below eleven folders and the drive's root.
    std::string paths;
    for (std::size_t i = 0; gather.GetPath(i) != nullptr; ++i) paths += Narrow(gather.GetPath(i)) + "|";
    EXPECT_EQ(gather.Paths.size(), 2U * 12);
    EXPECT_TRUE(
        paths.starts_with("C:\\Users\\User\\AppData\\Roaming\\Otter|C:\\Users\\User\\AppData\\Roaming\\Vendor|"
                          "C:\\ProgramData\\Otter|"))
        << paths;
    EXPECT_TRUE(paths.ends_with("|C:\\Otter|C:\\Vendor|")) << paths;

    CAppRegGather shallow(app);
    shallow.RunGather(RegGatherScan::kDataFolders);
    EXPECT_EQ(Items(shallow.RegItems), std::vector<std::string>{R"(M SOFTWARE\Classes\Installer\Dependencies\b)"});
}

TEST_F(RegGatherTest, DependencyWithoutName_EndsTheSearch) {
    builder.Key(u"HKLM\\SOFTWARE\\Classes\\Installer\\Dependencies\\a");
    builder.Text(u"HKLM\\SOFTWARE\\Classes\\Installer\\Dependencies\\b", u"DisplayName", u"Tool");
    Start();
    CApp app;
    CAppRegGather gather(Name(app, u"Tool"));
    gather.RunGather(RegGatherScan::kAll);
    EXPECT_TRUE(gather.RegItems.empty());
}

TEST_F(RegGatherTest, ComponentsOfALocation_AddThreeItemsForEachProductOnce) {
    const std::u16string data = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
    const auto component = [&](std::u16string_view user, std::u16string_view id, std::u16string_view product,
                               std::u16string_view path) {
        builder.Text(data + std::u16string(user) + u"\\Components\\" + std::u16string(id), product, path);
    };
    component(u"S-1", u"01", u"P1", u"C:\\App\\b.dll");
    component(u"S-2", u"01", u"P1", u"C:\\App\\b.dll");
    component(u"S-2", u"02", u"P2", u"C:\\App\\a.dll");
    component(u"S-2", u"03", u"P3", u"C:\\APP\\c.dll");
    component(u"S-2", u"04", u"P4", u"02:\\SOFTWARE\\C:\\App\\d");
    component(u"S-2", u"05", u"P5", u"D:\\link:C:\\App\\e");
    component(u"S-2", u"06", u"P6", u"C:x");
    Start();
    const auto products = [](std::u16string_view location) {
        CAppRuleSet rules;
        AddComponentItems(location, rules);
        std::vector<std::string> lines;
        for (const RuleRegItem& item : rules.IncludedRegs) lines.push_back(Narrow(item.path));
        return lines;
    };
    const std::string base = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
    const std::string classes = "SOFTWARE\\Classes\\Installer\\";
    std::vector<std::string> expected;
    for (const auto& [user, product] : {std::pair{"S-2", "P2"}, {"S-1", "P1"}, {"S-2", "P5"}}) {
        expected.insert(expected.end(), {classes + "Products\\" + product, classes + "Features\\" + product,
                                         base + user + "\\Products\\" + product});
    }
    EXPECT_EQ(products(u"C:\\App"), expected);
    EXPECT_EQ(products(u"b.dll"), std::vector(expected.begin() + 3, expected.begin() + 6));
    EXPECT_TRUE(products(u"C:\\Other").empty());
    EXPECT_TRUE(products(u"").empty());
}

}  // namespace
}  // namespace roundup
