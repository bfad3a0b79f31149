// Where known applications say that the data of their users is: the rules that come of it.
#include "appcenter/appsoftdata/appsoftdata.h"

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "tests/support/machinetest.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using Texts = std::vector<std::u16string>;

constexpr std::u16string_view kRoaming = u"C:\\Users\\User\\AppData\\Roaming\\";
constexpr std::u16string_view kServices = u"HKLM\\SYSTEM\\CurrentControlSet\\services\\";

class SoftDataTest : public MachineTest {
  protected:
    // The rules of an application with these texts: "d" and a folder, "f" and a file, "k" and a key.
    Texts RulesOf(std::u16string_view name, std::u16string_view key = u"", std::u16string_view type = u"",
                  std::uint64_t flags = 0) {
        Start();
        CApp app;
        EXPECT_TRUE(app.pwszName.Assign(name) && app.pwszKeyString.Assign(key) && app.pwszTypeDes.Assign(type));
        app.qwFlags = flags;
        CAppRuleSet rules;
        m_result = AddSoftDataRules(&app, &rules);
        Texts texts;
        for (const OwnedString& each : rules.IncludedDirectories) texts.push_back(u"d " + std::u16string(each));
        for (const OwnedString& each : rules.IncludedFiles) texts.push_back(u"f " + std::u16string(each));
        for (const RuleRegItem& each : rules.IncludedRegs) {
            EXPECT_EQ(each.root, RuleRoot::kLocalMachine);
            texts.push_back(u"k " + std::u16string(each.path));
        }
        return texts;
    }
    void RoamingFile(std::u16string_view name, std::string_view bytes) {
        builder.File(std::u16string(kRoaming).append(name), bytes);
    }

    ResultCode m_result;
};

TEST_F(SoftDataTest, MailStores_ComeFromTheProfileOfTheYearAlone) {
    constexpr std::u16string_view kOld =
        u"HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\outlook\\";
    constexpr std::u16string_view kNew = u"HKCU\\Software\\Microsoft\\Office\\16.0\\Outlook\\Profiles\\Outlook\\";
    const auto store = [&](std::u16string_view profile, std::u16string_view section, std::u16string_view name,
                           std::u16string_view path) {
        std::string bytes(reinterpret_cast<const char*>(path.data()), path.size() * 2);
        builder.Binary(std::u16string(profile).append(section), name, bytes.append(2, '\0'));
    };
    store(kOld, u"1", u"001f6610", u"C:\\old.pst");
    store(kNew, u"1", u"001f6610", u"C:\\unused.pst");
    store(kNew, u"1", u"001f6700", u"C:\\\u00E4.ost");
    store(kNew, u"2", u"001f6700", u"");
    store(kNew, u"2", u"001f6610", u"C:\\hidden.pst");
    store(kNew, u"3", u"other", u"C:\\x");
    store(kNew, u"4\\deeper", u"001f6700", u"C:\\x");
    EXPECT_EQ(RulesOf(u"Any", u"", u"SUITE_2007"), Texts{u"f C:\\old.pst"});
    EXPECT_EQ(RulesOf(u"Any", u"", u"SUITE_2010"), Texts{u"f C:\\old.pst"});
    EXPECT_EQ(RulesOf(u"Any", u"", u"suite_2016"), Texts{u"f C:\\\u00E4.ost"});
    EXPECT_EQ(RulesOf(u"Any", u"", u"SUITE_2016", AppFlags::kNotTopLevel), Texts{});
    EXPECT_EQ(RulesOf(u"Any", u"", u"SUITE_2013"), Texts{});
    EXPECT_EQ(Small(m_result), SmallCode::Win32Failure);
    // A member of a suite of another year is asked for nothing else.
    builder.Text(u"HKCU\\Software\\Microsoft\\Windows Live Mail", u"Store Root", u"D:\\Live\\");
    EXPECT_EQ(RulesOf(u"Windows Live Mail", u"", u"SUITE_2019"), Texts{});
    EXPECT_EQ(m_result, kSuccess);
    EXPECT_EQ(RulesOf(u"windows live MAIL"), Texts{u"d D:\\Live"});
    EXPECT_EQ(RulesOf(u"Photos", u"WinLiveSuite"), Texts{u"d D:\\Live"});
    EXPECT_EQ(Small(AddSoftDataRules(nullptr, nullptr)), SmallCode::GeneralFailure);
}

TEST_F(SoftDataTest, GameFolders_AreThoseThatExist) {
    EXPECT_EQ(RulesOf(u"Minecraft Launcher"), Texts{});
    EXPECT_EQ(Small(m_result), SmallCode::GeneralFailure);
    builder.Folder(u"D:\\One").Folder(u"D:\\\u00E4\u4E2D\\Two").Folder(u"D:\\Long").Folder(u"D:\\Last");
    const std::string text =
        "{\r\n"
        "\"gameDir\" : \"D:\\\\One\\\\\",\r\n"
        "  \"gameDir\" : \"D:\\\\\xC3\xA4\xE4\xB8\xAD\\\\Two\" ,\n"  // a blank in front of the comma stays in the text
        "  \"gameDir\" : \"D:\\\\\xC3\xA4\xE4\xB8\xAD\\\\Two\",\n"
        "\"gamedir\" : \"D:\\\\Long\",\n"
        "\"gameDir\" : \"D:\\\\Missing\",\n"
        "\"gameDir\" : \"D:\\\\Long\"\n"
        "\"gameDir\" : \"relative\",\n"
        "\"gameDir\" : \"\xFF\xFE:\\\\\xC3\",\n"
        ":gameDir,\n,gameDir:\ngameDir\n" +
        std::string(3000000, 'x') + "\n" + std::string(1023, 'y') + "\"gameDir\" : \"D:\\\\Long\",\n" +
        "\"gameDir\" : \"D:\\\\Last\",";  // no line end
    RoamingFile(u".minecraft\\launcher_profiles.json", text);
    EXPECT_EQ(RulesOf(u"The Minecraft Launcher"), (Texts{u"d D:\\One", u"d D:\\\u00E4\u4E2D\\Two", u"d D:\\Long"}));
    EXPECT_EQ(m_result, kSuccess);
    builder.SpecialFolder(26, u"C:\\" + std::u16string(200, u'\u4E2D'));
    EXPECT_EQ(RulesOf(u"Minecraft Launcher"), Texts{});
    EXPECT_EQ(Small(m_result), SmallCode::GeneralFailure);
}

TEST_F(SoftDataTest, MailAccounts_OutsideOfTheProfileAreFolders) {
    constexpr std::u16string_view kMail = u"Mozilla Thunderbird 115 (x64)";
    EXPECT_EQ(RulesOf(kMail), Texts{});
    EXPECT_EQ(Small(m_result), SmallCode::GeneralFailure);
    RoamingFile(u"Thunderbird\\profiles.ini", "[Profile1]\nPath=b\n[Profile0]\nPath=Profiles/\u00E4.default\n");
    const auto pref = [](const std::string& name, const std::string& value) {
        return "user_pref(\"mail.server." + name + "\", \"" + value + "\");\n";
    };
    const std::string text =
        pref("s1.directory", "D:\\\\Mail\\\\\xC3\xA4") + pref("s1.directory-rel", "[ProfD]../Mail/a") +
        pref("s2.directory", "D:\\\\Profile\\\\in") + pref("s2.directory-rel", "[ProfD]Mail/in") +
        // The line behind one that fails is dropped with it.
        pref("s3.directory", "D:\\\\Lost") + pref("s4.directory", "D:\\\\Four") +
        pref("s4.directory-rel", "[ProfD]../four") + pref("s5.name", "x") + "s6.directory no path\n" +
        pref("s6.directory-rel", "../") + pref("s7.directory", "E:\\\\Seven)") + pref("s7.directory-rel", "../7") +
        pref("s8.directory", "E:\\\\Eight");
    RoamingFile(u"Thunderbird\\Profiles\\\u00E4.default\\prefs.js", text);
    builder.SpecialFolder(26, kRoaming.substr(0, kRoaming.size() - 1));
    EXPECT_EQ(RulesOf(kMail), (Texts{u"d D:\\Mail\\\u00E4", u"d E:\\Seven)"}));
    EXPECT_EQ(m_result, kSuccess);
}

TEST_F(SoftDataTest, DatabaseService_FirstCompleteOneCounts) {
    const auto service = [&](std::u16string_view name, std::u16string_view path) {
        builder.Text(std::u16string(kServices).append(name), u"ImagePath", path);
    };
    service(u"Aardvark", u"\"C:\\x.exe\" --defaults-file=\"C:\\x\\my.ini\"");
    builder.Key(std::u16string(kServices) + u"MYSQL");
    service(u"mysql1", u"\"C:\\S\\mysqld.exe\" MySQL");
    service(u"MySQL2", u"\"C:\\S\\mysqld.exe\" --defaults-file=\"C:\\S\\my.cnf\"");
    service(u"MySQL3", u"\"C:\\S\\mysqld\" --defaults-file=\"C:\\S\\my.ini\"");
    service(u"MySQL4", u"\"C:\\my.ini\\mysqld.exe\" --defaults-file=\"C:\\S\\my.ini\"");  // ends before it begins
    EXPECT_EQ(RulesOf(u"MySQL Installer"), Texts{});
    EXPECT_EQ(Small(m_result), SmallCode::GeneralFailure);
    service(u"MySQL80", u"\"C:\\S\\mysqld.exe\" --defaults-file=\"D:\\Data \u00E4\\my.ini\" MySQL80");
    service(u"MySQL90", u"\"C:\\S\\mysqld.exe\" --defaults-file=\"E:\\my.ini\" MySQL90");
    EXPECT_EQ(RulesOf(u"MySQL Installer - Community"),
              (Texts{u"d D:\\Data \u00E4", u"k SYSTEM\\CurrentControlSet\\services\\MySQL80"}));
}

}  // namespace
}  // namespace roundup
