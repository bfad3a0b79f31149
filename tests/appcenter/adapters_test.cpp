#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appadapterconfig.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadaptermgr/appadaptermgr.h"
#include "appcenter/appadaptermgr/compatibility.h"
#include "appcenter/appadapterparse/appadapterparse.h"
#include "appcenter/appadapterparse/familylocation.h"
#include "platform/recorded/openmachine.h"
#include "tests/appcenter/rules_support.h"
#include "tests/support/machinefiles.h"

namespace roundup {
namespace {

class AdaptersTest : public RulesTest {
  protected:
    static RefPtr<CApp> App(std::u16string_view name, std::u16string_view location = {}, std::u16string_view key = {}) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszName = OwnedString(name);
        if (!location.empty()) app->pwszInstallLoc = OwnedString(location);
        if (!key.empty()) app->pwszKeyString = OwnedString(key);
        return app;
    }
    // What the adapters of the list add for an application.
    static std::string Applied(CApp& app) {
        EXPECT_TRUE(Succeeded(LoadAdapters()));
        CAppRuleSet rules;
        EXPECT_TRUE(Succeeded(ApplyAdapters(&app, &rules)));
        return Describe(rules);
    }
    // The list file in the platform's own code page.
    void List(std::string_view text) { ConfigBytes(u"AppsIniEx.ini", text); }
};

std::string Describe(const CAppAdapterConfig& config) {
    std::string text = ToUtf8(config.pwszVersion);
    const auto add = [&](const char* name, const CStringSet& set) {
        for (const OwnedString& item : set) text += std::string("; ") + name + " " + ToUtf8(item);
    };
    for (const AdapterProgram& program : config.Programs) {
        text += "; program " + ToUtf8(program.pwszName);
        add("appdir", program.Dirs);
        for (const auto& [key, version] : program.Versions) text += "; " + ToUtf8(key) + "=" + ToUtf8(version);
    }
    add("dir", config.ComponentDirs);
    add("direx", config.ComponentDirsEx);
    for (const RuleRegItem& item : config.ComponentRegs) {
        text += "; reg " + std::to_string(item.root & 0xF) + " " + ToUtf8(item.path);
    }
    add("delete", config.ComponentDeleteFiles);
    add("file", config.ComponentFiles);
    add("hide", config.HideAppNames);
    add("hidekey", config.HideAppKeys);
    add("sub", config.SubAppNames);
    add("subkey", config.SubAppKeys);
    add("action", config.Actions);
    return text + (config.bAppendProc ? "; proc" : "");
}

// Catches a file that is taken with a fault in it, or refused without one, and a line in the wrong place.
TEST_F(AdaptersTest, AdapterFile_IsParsedWholeOrNotAtAll) {
    const struct {
        std::u16string text;
        std::string expected;
        bool parsed = true;
        bool failed = false;
    } rows[] = {
        {u"VERSION:V\r\nAPPNAME:A\r\nAPPKEY:k1\r\nAPPVERSION:1\r\nAPPKEY:lost\r\nAPPKEY:k2\r\nAPPVERSION:2\r\n"
         u"APPDIR:[X]\\a\r\n\r\n;note\r\n  appname: B\r\nAPPDIR:b",
         "V; program A; appdir [X]\\a; k1=1; k2=2; program B; appdir b"},
        {u"VERSION:V\r\nCOMPONENTSDIR:d\r\nCOMPONENTSDIREX:x\r\nCOMPONENTSREG:HKCU, r\r\nCOMPONENTSREG:HKXX, r\r\n"
         u"COMPONENTSDELETEFILE:e\r\nCOMPONENTSFILE:f\r\nCOMPONENTSHIDEAPPNAME:g\r\nCOMPONENTSHIDEAPPKEY:h\r\n"
         u"COMPONENTSSUBAPPNAME:i\r\nCOMPONENTSSUBAPPKEY:j\r\nAPPENDPROC:1\r\nACTION:[App]\\k\r\nAPPKEY:",
         "V; dir d; direx x; reg 1 r; delete e; file f; hide g; hidekey h; sub i; subkey j; action C:\\App\\k; proc"},
        {u"APPNAME:A\r\nAPPDIR:a", "", false, false},
        {u"VERSION:V\r\nAPPNAME:A\r\nCOLOUR:red", "", false, true},
        {u"VERSION:V\r\nAPPDIR:a\r\nAPPNAME:A", "", false, true},
        {u"VERSION:V\r\nAPPNAME:A\r\nAPPVERSION:1", "", false, true},
        {u"VERSION:V\r\nAPPKEY:k\r\nAPPVERSION:1\r\nAPPNAME:A", "", false, true},
        {u"VERSION:V\r\nAPPNAME:A\r\nAPPKEY:k\r\nAPPVERSION:1\r\nAPPVERSION:2", "", false, true},
    };
    Start();
    for (const auto& row : rows) {
        CAppAdapterConfig config;
        const ResultCode rc = config.ParseText(row.text, u"C:\\App");
        EXPECT_EQ(Small(rc), row.failed ? SmallCode::GeneralFailure : SmallCode::Success) << ToUtf8(row.text);
        EXPECT_EQ(config.bParsed, row.parsed) << ToUtf8(row.text);
        EXPECT_EQ(Describe(config), row.expected) << ToUtf8(row.text);
    }
}

constexpr std::u16string_view kFennFile =
    u"VERSION:XXXX\r\nAPPNAME:Fenn Draw\r\nAPPDIR:[CommonAppDataFolder]\\Fenn\\Draw\\\r\nAPPNAME:Fenn\r\n"
    u"COMPONENTSDIR:[ProgramFilesFolder]\\Fenn*\\Shared\r\nCOMPONENTSDIR:[ProgramFilesFolder]\\Absent\r\n"
    u"COMPONENTSDIR:C:\\ProgramData\\Fenn\r\nCOMPONENTSDIREX:[CommonAppDataFolder]\\Fenn\r\n"
    u"COMPONENTSFILE:[CommonAppDataFolder]\\Fenn\\a.txt\r\nCOMPONENTSDELETEFILE:[CommonAppDataFolder]\\XXXX\\b.txt\r\n"
    u"COMPONENTSREG:HKLM,SOFTWARE\\Fenn\r\nCOMPONENTSREG:HKLM,SOFTWARE\\FENN\r\nCOMPONENTSHIDEAPPNAME:Help\r\n"
    u"COMPONENTSSUBAPPKEY:K\r\nACTION:stop [App]\r\nAPPENDPROC:1";

void FillFenn(MachineBuilder& builder) {
    builder.Folder(u"C:\\Program Files\\Fenn 2\\Shared")
        .Folder(u"C:\\Program Files\\Fenn 1")
        .Folder(u"C:\\ProgramData\\Fenn\\Draw")
        .File(u"C:\\ProgramData\\Fenn\\a.txt")
        .File(u"C:\\ProgramData\\Fenn\\b.txt");
}

TEST_F(AdaptersTest, MatchingApplication_GetsTheRulesThatExistOnThisMachine) {
    FillFenn(builder);
    List("[AppName]\r\nFenn=1\r\nOther\r\n[More]\r\nDraw=1\r\n");
    Config(u"Fenn.INCEX", kFennFile);
    Machine& machine = Start();
    const std::string shared =
        "+file C:\\ProgramData\\Fenn\\a.txt; +dir C:\\Program Files\\Fenn 2\\Shared; +dir C:\\ProgramData\\Fenn";
    const std::string rest = "; -file C:\\ProgramData\\Fenn\\b.txt; action stop C:\\D; hide Help; subkey K; proc";
    const auto draw = App(u"FENN DRAW 3", u"C:\\D");
    EXPECT_EQ(Applied(*draw), "+reg 2 SOFTWARE\\Fenn; " + shared + "; +dir C:\\ProgramData\\Fenn\\Draw" + rest);
    // The file is read once, and the first application's location stays in the actions.
    ASSERT_EQ(machine.Files().Delete(u"C:\\RoundupHost\\Config\\Fenn.INCEX"), kErrorSuccess);
    EXPECT_EQ(Applied(*App(u"Fenn Tool", u"C:\\E")), "+reg 2 SOFTWARE\\Fenn; " + shared + rest);

    const auto hidden = App(u"Fenn Draw");
    hidden->qwFlags = AppFlags::kNotTopLevel;
    EXPECT_EQ(Applied(*hidden), "-file C:\\ProgramData\\Fenn\\b.txt");
    // It matches by its location or key, and is none of the programs.
    EXPECT_EQ(Applied(*App(u"Tool", u"C:\\Fenn")), "-file C:\\ProgramData\\Fenn\\b.txt");
    EXPECT_EQ(Applied(*App(u"Tool", {}, u"xfennx")), "-file C:\\ProgramData\\Fenn\\b.txt");
    EXPECT_EQ(Applied(*App(u"Fen Draw")), "");
}

// Catches a version word that is taken from the wrong place, and a location that is narrowed twice.
TEST_F(AdaptersTest, FamilyMember_GetsThePathsOfItsVersionAndANarrowLocation) {
    const std::u16string base = u"C:\\Program Files\\Adobe\\";
    builder.Folder(base + u"Brush CS6\\Brush")
        .Folder(base + u"Brush CC 2018")
        .Folder(base + u"Parts CS5")
        .Folder(base + u"Parts CC 2018");
    List("[AppName]\r\nAdobe=\r\n");
    Config(u"Adobe.INCEX",
           u"VERSION:%V%\r\nAPPNAME:Brush\r\nAPPKEY:k6\r\nAPPVERSION:CS6\r\nAPPKEY:none\r\nAPPVERSION:\r\n"
           u"APPDIR:[ProgramFilesFolder]\\Adobe\\Brush %V%\r\nCOMPONENTSDIR:[ProgramFilesFolder]\\Adobe\\Parts %V%\r\n"
           u"COMPONENTSFILE:[ProgramFilesFolder]\\Adobe\\Parts CS5");
    Start();
    const std::string file = "+file C:\\Program Files\\Adobe\\Parts CS5; ";
    const std::string parts = "C:\\Program Files\\Adobe\\Parts ";
    const auto brush = App(u"Adobe Brush CS6", u"C:\\Program Files\\Adobe", u"K6");
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(Applied(*brush), file + "+dir C:\\Program Files\\Adobe\\Brush CS6");
        EXPECT_EQ(ToUtf8(brush->pwszInstallLoc), "C:\\Program Files\\Adobe\\Brush CS6");
    }
    EXPECT_EQ(Applied(*App(u"Adobe Stamp", {}, u"other")), file + "+dir " + parts + "CS5; +dir " + parts + "CC 2018");
    EXPECT_EQ(Applied(*App(u"Adobe Brush", {}, u"none")), "");
}

TEST_F(AdaptersTest, FamilyLocation_IsNarrowedToTheFolderWithMostVersionWords) {
    const struct {
        std::u16string name;
        std::vector<std::u16string> folders;
        std::string expected;
    } rows[] = {
        {u"Adobe After Effects CC 2018",
         {u"After Effects", u"adobe after effects cc 2018"},
         "adobe after effects cc 2018"},
        {u"Adobe  After  Effects CC 2018", {u"After Effects 2018", u"After Effects CC"}, "After Effects 2018"},
        {u"Tool for Adobe", {u"Tool", u"Tool for Adobe"}, "Tool for Adobe"},
        {u"Adobe CC 2018", {u"CC 2018"}, ""},
        {u"Tool", {u"Tool"}, ""},
    };
    for (const auto& row : rows) {
        builder = MachineBuilder();
        for (const auto& folder : row.folders) builder.Folder(u"C:\\A\\" + folder);
        builder.File(u"C:\\A\\Tool.txt");
        Start();
        const auto app = App(row.name, u"C:\\A");
        FixFamilyLocation(*app);
        const std::string expected = row.expected.empty() ? "C:\\A" : "C:\\A\\" + row.expected;
        EXPECT_EQ(ToUtf8(app->pwszInstallLoc), expected) << ToUtf8(row.name);
        EXPECT_EQ(ToUtf8(app->pwszRealInstallLoc), row.expected.empty() ? "" : expected) << ToUtf8(row.name);
    }
    builder = MachineBuilder();
    builder.Folder(u"D:\\B\\Tool 1").Folder(u"E:\\C").Reparse(u"C:\\A", u"D:\\B").Reparse(u"D:\\B\\Tool 0", u"E:\\C");
    Start();
    const auto app = App(u"Adobe Tool", u"C:\\A\\");
    FixFamilyLocation(*app);
    EXPECT_EQ(ToUtf8(app->pwszInstallLoc) + " " + ToUtf8(app->pwszRealInstallLoc), "C:\\A\\Tool 0 E:\\C");
}

// Catches a list that is not read, read when it must not be, or read again for each application.
TEST_F(AdaptersTest, ListFile_MakesAdaptersOnceAndIsTriedAgainByTheNextLoad) {
    Config(u"Fenn.INCEX", u"VERSION:X\r\nAPPNAME:Fenn\r\nCOMPONENTSHIDEAPPNAME:Help");
    std::string many = "[AppName]\r\n";
    for (int i = 0; i < 100; ++i) many += "a" + std::to_string(i) + "=\r\n";
    const struct {
        std::string text;
        bool loaded;
    } rows[] = {
        {"[AppName]\r\nFenn=", true},
        {"[AppName]\r\nFenn=1\r\n" + many.substr(11), true},
        {many + "Fenn=1\r\n", false},
        {"[AppName]\r\nFenn=1\r\n" + std::string(0x100000, ';'), false},
    };
    for (const auto& row : rows) {
        List(row.text);
        Machine& machine = Start();
        const auto app = App(u"Fenn");
        EXPECT_EQ(Applied(*app), row.loaded ? "hide Help" : "") << row.text.substr(0, 40);
        ASSERT_TRUE(
            machine.Profile().WriteString(u"AppName", u"Fenn", nullptr, u"C:\\RoundupHost\\Config\\AppsIniEx.ini"));
        EXPECT_EQ(Applied(*app), row.loaded ? "hide Help" : "");
    }
    builder = MachineBuilder();
    ConfigBytes(u"Fenn.INCEX", "broken");
    List("[AppName]\r\nFenn=\r\n");
    Machine& machine = Start();
    const auto app = App(u"Fenn");
    EXPECT_EQ(Applied(*app), "");
    const std::string whole = WideBytes(u"\uFEFFVERSION:X\r\nAPPNAME:Fenn\r\nCOMPONENTSHIDEAPPNAME:Help");
    ASSERT_EQ(WriteFile(machine.Files(), u"C:\\RoundupHost\\Config\\Fenn.INCEX", kCreateAlways, whole), kErrorSuccess);
    EXPECT_EQ(Applied(*app), "") << "the broken file is not read again in one load";
    ProcessWide<RuleFileStore>().Renew();
    EXPECT_EQ(Applied(*app), "hide Help");
}

TEST_F(AdaptersTest, CompatibilityList_IsReadUpToItsCountAndItsHighestNumber) {
    const struct {
        const char* text;
        std::string expected;
    } rows[] = {
        {"count=3\r\n1=a\r\n3=c\r\n", "a1 c3"},
        {"1=a\r\n3=c\r\n", "a1"},
        {"count=2\r\n1=a\r\n2=b\r\n3=c\r\n5=e\r\n", "a1 b2 c3"},
        {"count=2000000000\r\n3=c\r\n7=A\r\n9=a\r\n4000=z\r\n", "A7 c3 z4000"},
        {"count=4\r\n1=\r\n2=\\\r\n3=c\r\n01=x\r\n+4=y\r\n", "c3"},
        {"1=a\r\n2=\r\n3=c\r\n4=\\\r\n5=e\r\n", "a1 c3"},
        {"count=0x3\r\n1=a\r\n3=c\r\n", "a1 c3"},
    };
    for (const auto& row : rows) {
        ConfigBytes(u"Compatibility\\Tool.ini", std::string("[component]\r\n") + row.text);
        Start();
        for (const auto* key : {u"TOOL", u"Tool - 2", u"Tool-"}) {
            CompatibilityMap map;
            LoadCompatibility(key, map);
            std::string text;
            for (const auto& [name, number] : map) {
                text += (text.empty() ? "" : " ") + ToUtf8(name) + std::to_string(number);
            }
            EXPECT_EQ(text, row.expected) << row.text << ToUtf8(key);
        }
    }
    for (const auto* key : {u"", u"Tool\u20132", u"-Tool", u"Too"}) {
        CompatibilityMap map;
        LoadCompatibility(key, map);
        EXPECT_TRUE(map.empty()) << ToUtf8(key);
    }
}

// Catches samples that do nothing: in the wrong encoding, under the wrong name, with tokens that are none.
TEST_F(AdaptersTest, SampleMachine_HasRulesThatSaySomething) {
    SourceError error;
    auto machine = OpenRecordedMachine({std::string(ROUNDUP_SOURCE_DIR) + "/samples/machine", {}, {}, {}, {}}, error);
    ASSERT_NE(machine, nullptr);
    Start(std::move(machine));
    const auto app = App(u"Fennmark Archiver 4.2", u"C:\\Program Files (x86)\\Fennmark Archiver", u"Fennmark Archiver");
    CAppRuleSet rules(RuleSetSource{app->pwszKeyString, app->pwszInstallLoc, {}, {}});
    ASSERT_TRUE(Succeeded(LoadAdapters()) && Succeeded(ApplyAdapters(app.Get(), &rules)));
    EXPECT_EQ(
        Describe(rules),
        "+reg 0 .fenn; +reg 0 Fennmark.Bundle; +reg 2 SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App "
        "Paths\\fennarc.exe; +reg 2 SOFTWARE\\Fennmark; +file C:\\users\\Public\\Desktop\\Fennmark Archiver.lnk; "
        "+dir C:\\Program Files (x86)\\Fennmark Archiver; +dir C:\\ProgramData\\Fennmark\\Shared 4; "
        "+dir C:\\ProgramData\\Fennmark\\Archiver 4; -file C:\\ProgramData\\Fennmark\\Shared 4\\fonts\\plain.txt; "
        "-dir C:\\Program Files (x86)\\Fennmark Archiver\\updates; sub Fennmark Viewer");
    EXPECT_TRUE(rules.IsDirExcluded(u"C:\\Windows") && rules.IsFileExcluded(u"C:\\windows\\WIN.INI"));
    const CAppRuleSet plotter({u"{5B0E8D0C-3A3B-4F0E-9C55-2D3C7A1E4241}", {}, {}, {}});
    EXPECT_EQ(plotter.IncludedRegs.size(), 3U);
    EXPECT_TRUE(plotter.IsHideAppMatch(u"", u"{2E7C1F90-64AD-4B1B-B2D8-13F5E8A97301}"));
    const CAppRuleSet otterquill({u"Otterquill \U0001F9A6_is1", {}, {}, {}});
    EXPECT_TRUE(otterquill.IsSubAppMatch(u"Otterquill Letterheads", u""));
    CompatibilityMap listed;
    LoadCompatibility(u"Osmundgate Link", listed);
    EXPECT_EQ(listed.size(), 2U);
}

}  // namespace
}  // namespace roundup
