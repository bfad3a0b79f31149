#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadapterconfig/ruletext.h"
#include "tests/appcenter/rules_support.h"

namespace roundup {
namespace {

const RuleSetSource kTool{u"Tool", u"C:\\Apps\\Tool", {}, u"D:\\Old\\Tool"};

// A machine with users' books in both views, and keys to look into.
void FillRegistry(MachineBuilder& builder) {
    const std::u16string data = u"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
    builder.Key(u"HKLM\\SOFTWARE\\" + data + u"S-1\\Products\\P1")
        .Key(u"HKLM\\SOFTWARE\\" + data + u"S-2\\Products\\P1")
        .Key(u"HKLM\\SOFTWARE\\" + data + u"S-2\\Components\\C1")
        .Key(u"HKLM\\SOFTWARE\\Wow6432Node\\" + data + u"S-0\\Products\\P1")
        .Key(u"HKLM\\SOFTWARE\\Wow6432Node\\" + data + u"S-0\\Components\\C1")
        .Key(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\U 1")
        .Text(u"HKLM\\SOFTWARE\\Maker", u"Path", u"C:\\Data\\Sixty\\")
        .Text(u"HKLM\\SOFTWARE\\Wow6432Node\\Maker", u"Path", u"C:\\Data\\Thirty")
        .Text(u"HKLM\\SOFTWARE\\Maker", u"", u"C:\\Default")
        .MultiText(u"HKCU\\Software\\Maker", u"Several", {u"C:\\One", u"C:\\Two"})
        .Key(u"HKU\\Maker\\Tool.1")
        .Key(u"HKU\\Maker\\tool.22")
        .Key(u"HKU\\Maker\\Toolbox");
}

// Catches a line that is read as another one, and what adds an item where the format says that the line adds nothing.
TEST_F(RulesTest, LineOfAnIncludeFile_AddsWhatTheFormatSays) {
    const std::string installer = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
    const struct {
        std::u16string line;
        std::string expected;
    } rows[] = {
        {u"DIR:[]", ""},
        {u"DIR:[]\\", "+dir C:\\Apps\\Tool"},
        {u"dir:   []\\sub\\", "+dir C:\\Apps\\Tool\\sub"},
        {u"DIR:\t[]\\sub", ""},
        {u"DIR: []\\sub ", "+dir C:\\Apps\\Tool\\sub "},
        {u"DIR:[..]\\x", "+dir C:\\Apps\\x"},
        {u"DIR:[volumeofinstallsource]\\Temp", "+dir D:\\Temp"},
        {u"DIR:[]\\a\r\nDIR:[]\\A\\\r\nDIR:[]\\b", "+dir C:\\Apps\\Tool\\a; +dir C:\\Apps\\Tool\\b"},
        {u"FILE:C:\\x", ""},
        {u"FILE:[MyVedioFolder]\\a.avi", "+file C:\\Users\\User\\Videos\\a.avi"},
        {u"FILE:[commonappdatafolder]\\a", "+file C:\\ProgramData\\a"},
        {u"FILE:[CommonAppDataFolder]", ""},
        {u"REG:HKLM,  Software\\X", "+reg 2 Software\\X"},
        {u"REG:HKU,A\r\nREG:HKCC,A\r\nREG:HKCR,A\r\nREG:HKCR,a", "+reg 3 A; +reg 5 A; +reg 0 A"},
        {u"REG:REDIRECTION,HKLM, Software\\X", "+reg 2R Software\\X"},
        {u"REG:REDIRECTION, HKLM, Software\\X", ""},
        {u"REG:HKXX, A", ""},
        {u"REG:INST, P1", "+reg 2 " + installer + "S-0\\Products\\P1; +reg 2 " + installer +
                              "S-1\\Products\\P1; +reg 2 " + installer + "S-2\\Products\\P1"},
        {u"REG:INST,P2\r\nREG:INST,\r\nREG:UINS,\r\nREG:COMP,", ""},
        {u"REG:UINS, U 1", "+reg 2 SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\U 1"},
        {u"REG:comp,C1", "+reg 2 " + installer + "S-2\\Components\\C1"},
        {u"REGDIR: HKLM, SOFTWARE\\Maker\\\\Path", "+dir C:\\Data\\Thirty; +dir C:\\Data\\Sixty"},
        {u"REGDIR:HKLM,SOFTWARE\\Maker", "+dir C:\\Default"},
        {u"REGDIR:HKLM,SOFTWARE\\Nobody\\\\Path", ""},
        {u"REGX:HKU,Maker\\\\tool.*", "+reg 3 Maker\\Tool.1; +reg 3 Maker\\tool.22"},
        {u"REGX:HKU,\\\\*\r\nREGX:HKU,Maker\\\\\r\nREGX:HKU,Maker\\\r\nREGX:HKU,Maker", ""},
        {u"ACTION:run [App]\\x.exe [App]", "action run C:\\Apps\\Tool\\x.exe [App]"},
        {u"ACTION:run [app] [FontsFolder]", "action run [app] C:\\Windows\\Fonts"},
        {u"HIDEAPPNAME: A B\r\nhideappkey:K\r\nSUBAPPNAME:C\r\nSUBAPPKEY:{D}\r\nSUBAPPKEY:",
         "hide A B; hidekey K; sub C; subkey {D}"},
        {u"APPENDPROC:", "proc"},
        {u"APPENDPROC:1\r\nAPPENDPROC: 0", ""},
        {u";DIR:[]\\x\r\nDIRS:[]\\x\r\nDIR []\\x\r\n\r\nCOLOUR:red\r\nDIR:[]\\y", "+dir C:\\Apps\\Tool\\y"},
    };
    FillRegistry(builder);
    for (const auto& row : rows) {
        Config(u"Tool.INC", row.line);
        Start();
        EXPECT_EQ(Describe(CAppRuleSet(kTool)), row.expected) << ToUtf8(row.line);
    }
}

TEST_F(RulesTest, ExcludeFile_FillsTheExcludedListsAndTheSharedOnes) {
    FillRegistry(builder);
    Config(u"Tool.INC", u"DIR:[]\\a");
    Config(u"tool.exc",
           u"DIR:[]\\b\\\r\nFILE:[]\\c\r\nREG:HKLM,K\r\nREGX:HKU,Maker\\\\*x\r\nREGDIR:HKLM,SOFTWARE\\Maker\r\n"
           u"HIDEAPPNAME:H\r\nACTION:[WFY]x\r\nAPPENDPROC:1");
    Start();
    EXPECT_EQ(
        Describe(CAppRuleSet(kTool)),
        "+dir C:\\Apps\\Tool\\a; -reg 2 K; -reg 3 Maker\\Toolbox; -file C:\\Apps\\Tool\\c; -dir C:\\Apps\\Tool\\b; "
        "-dir C:\\Default; action C:\\RoundupHost\\x; hide H; proc");
}

TEST_F(RulesTest, UnknownLocations_LeaveOutTheLinesThatStandOnThem) {
    Config(u"Tool.INC",
           u"DIR:[]\\a\r\nDIR:[..]\\a\r\nDIR:[..\\..]\\a\r\nDIR:[VolumeOfInstallSource]\\a\r\nACTION:[App]\r\n"
           u"DIR:[WindowsVolume]\\a");
    Start();
    EXPECT_EQ(Describe(CAppRuleSet({u"Tool", {}, {}, {}})), "+dir C:\\a");
    EXPECT_EQ(Describe(CAppRuleSet({u"Tool", u"C:\\Tool\\", {}, u"\\\\server\\x"})),
              "+dir C:\\Tool\\\\a; +dir C:\\a; action C:\\Tool\\");
}

// Catches a shorter name that is tried too early, too late, or for the wrong text.
TEST_F(RulesTest, NameOfTheFile_IsTheTypeElseTheKeyElseTheKeyUpToItsDash) {
    const struct {
        std::u16string key, type;
        std::vector<std::u16string> files;
        std::string expected;
    } rows[] = {
        {u"Tool 2.0 - Home", u"", {u"Tool 2.0"}, "+dir C:\\Tool 2.0"},
        {u"Tool-2.0", u"", {u"Tool", u"Tool-2.0"}, "+dir C:\\Tool-2.0"},
        {u"Tool\u2013A\u2014B-C", u"", {u"Tool", u"Tool\u2013A", u"Tool\u2013A\u2014B"}, "+dir C:\\Tool–A—B"},
        {u" - Tool", u"", {u"", u" "}, ""},
        {u"Tool-1", u"SUITE_2016", {u"Tool", u"Tool-1", u"SUITE_2016"}, "+dir C:\\SUITE_2016"},
        {u"Tool-1", u"SUITE_2016", {u"Tool", u"Tool-1", u"SUITE"}, "+dir C:\\Tool"},
        {u"..\\Config\\Tool", u"", {u"Tool"}, "+dir C:\\Tool"},
    };
    for (const auto& row : rows) {
        builder = MachineBuilder();
        for (const auto& file : row.files) Config(file + u".INC", u"DIR:[WindowsVolume]\\" + file);
        Start();
        EXPECT_EQ(Describe(CAppRuleSet({row.key, {}, row.type, {}})), row.expected) << ToUtf8(row.key);
    }
    // A file that is there stands for its name, whatever is in it.
    for (const bool folder : {false, true}) {
        builder = MachineBuilder();
        Config(u"Tool.INC", u"DIR:[WindowsVolume]\\x");
        folder ? void(builder.HostFolder(u"Config\\Tool-1.INC")) : ConfigBytes(u"Tool-1.INC", {});
        Start();
        EXPECT_EQ(Describe(CAppRuleSet({u"Tool-1", {}, {}, {}})), "");
    }
}

TEST_F(RulesTest, BrokenFile_IsReadAsFarAsItsBytesSayAndNeverBeyond) {
    const std::string line = WideBytes(u"DIR:[WindowsVolume]\\a");
    const std::string end = WideBytes(u"\r\n");
    const std::u16string longName(1000000, u'n');
    const std::string a = "+dir C:\\a";
    const struct {
        const char* what;
        std::string bytes;
        std::string expected;
    } rows[] = {
        {"one byte", "\xFF", ""},
        {"half a character", "\xFF\xFE" + line + "x", a},
        {"no mark: the first character is lost", line, ""},
        {"a zero", "\xFF\xFE" + line + WideBytes(std::u16string_view(u"\0\r\nDIR:[WindowsVolume]\\b", 25)), a},
        {"narrow text", "DIR:[WindowsVolume]\\a\r\n", ""},
        {"a long line", "\xFF\xFE" + WideBytes(u"HIDEAPPNAME:" + longName) + end + line,
         a + "; hide " + ToUtf8(longName)},
        {"long noise", "\xFF\xFE" + WideBytes(longName) + end + line, a},
        {"stars and letters",
         "\xFF\xFE" + WideBytes(u"REGX:HKU,Maker\\\\*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b") + end + line, a},
        {"the largest", "\xFF\xFE" + line + end + std::string(kLargestRuleFile - 4 - line.size() - 2, ' '), a},
        {"above the largest", "\xFF\xFE" + line + end + std::string(kLargestRuleFile, ' '), ""},
    };
    builder.Key(u"HKU\\Maker\\" + std::u16string(250, u'a'));
    for (const auto& row : rows) {
        ConfigBytes(u"Tool.INC", row.bytes);
        Start();
        EXPECT_TRUE(Describe(CAppRuleSet({u"Tool", {}, {}, {}})) == row.expected) << row.what;
    }
    builder.DenyFile(u"C:\\RoundupHost\\Config\\Tool.INC");
    Start();
    EXPECT_EQ(Describe(CAppRuleSet({u"Tool", {}, {}, {}})), "");
}

TEST_F(RulesTest, Questions_CompareWholePathsAndAskTheGlobalRulesToo) {
    Config(u"{00000000-0000-0000-0000-000000000000}.EXC", u"DIR:[WindowsVolume]\\All\r\nFILE:[WindowsVolume]\\all.txt");
    Config(u"Tool.EXC", u"DIR:[]\\Own\r\nFILE:[]\\own.txt");
    Config(u"Tool.INC", u"SUBAPPNAME:pack\r\nSUBAPPKEY:Key\r\nHIDEAPPNAME:Help\r\nHIDEAPPKEY:H");
    Start();
    const CAppRuleSet rules(kTool);
    const CAppRuleSet none({u"Other", {}, {}, {}});
    for (const auto* path : {u"c:\\all", u"C:\\APPS\\tool\\OWN"}) EXPECT_TRUE(rules.IsDirExcluded(path));
    for (const auto* path : {u"C:\\All\\x", u"C:\\Apps\\Tool", u"C:\\all.txt"}) EXPECT_FALSE(rules.IsDirExcluded(path));
    EXPECT_TRUE(rules.IsFileExcluded(u"C:\\ALL.txt") && rules.IsFileExcluded(u"C:\\Apps\\Tool\\Own.txt"));
    EXPECT_FALSE(rules.IsFileExcluded(u"C:\\All"));
    EXPECT_TRUE(rules.IsFileExcluded(nullptr) && rules.IsDirExcluded(u""));
    EXPECT_TRUE(none.IsDirExcluded(u"C:\\All") && CAppRuleSet::Global().IsFileExcluded(u"C:\\all.txt"));
    EXPECT_FALSE(none.IsDirExcluded(u"C:\\Apps\\Tool\\Own"));

    const struct {
        const char16_t *name, *key;
        bool sub, hide;
    } rows[] = {
        {u"Language PACK 2", u"x", true, false}, {u"x", u"kEY", true, false},     {u"x", u"Key 2", false, false},
        {u"Tool HELP", u"Keys", false, true},    {u"Help pack", u"", true, true}, {nullptr, nullptr, false, false},
    };
    for (const auto& row : rows) {
        const auto app = RefPtr<CApp>::Adopt(new CApp);
        if (row.name != nullptr) app->pwszName = OwnedString(row.name);
        if (row.key != nullptr) app->pwszKeyString = OwnedString(row.key);
        EXPECT_EQ(rules.IsSubAppMatch(*app), row.sub) << ToUtf8(app->pwszName);
        EXPECT_EQ(rules.IsHideAppMatch(*app), row.hide) << ToUtf8(app->pwszName);
    }
    EXPECT_TRUE(rules.HasSubAppRules());
    EXPECT_FALSE(none.HasSubAppRules());
}

// Catches a file that is read again for each application, and one that is kept beyond the load.
TEST_F(RulesTest, ChangedFiles_AreSeenByTheNextLoadAndNotBefore) {
    Config(u"Tool.INC", u"DIR:[]\\a");
    Machine& machine = Start();
    EXPECT_EQ(Describe(CAppRuleSet(kTool)), "+dir C:\\Apps\\Tool\\a");
    ASSERT_EQ(machine.Files().Delete(u"C:\\RoundupHost\\Config\\Tool.INC"), kErrorSuccess);
    EXPECT_EQ(Describe(CAppRuleSet(kTool)), "+dir C:\\Apps\\Tool\\a");
    ProcessWide<RuleFileStore>().Renew();
    EXPECT_EQ(Describe(CAppRuleSet(kTool)), "");
}

TEST_F(RulesTest, ManyThreads_GetTheSameRules) {
    Config(u"Tool.INC", u"DIR:[]\\a\r\nFILE:[]\\b");
    Start();
    std::vector<std::string> found(8);
    std::vector<std::thread> threads;
    for (std::string& text : found) {
        threads.emplace_back([&text] {
            const CAppRuleSet rules(kTool);
            text = rules.IsFileExcluded(u"C:\\x") ? "excluded" : Describe(rules);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(found, std::vector<std::string>(8, "+file C:\\Apps\\Tool\\b; +dir C:\\Apps\\Tool\\a"));
}

}  // namespace
}  // namespace roundup
