// What the installer's books, the help files and the rule files add to the analysis of a product.
#include <gmock/gmock.h>

#include "msianalyzer/configfileanalyzer.h"
#include "msianalyzer/imsianalyzer.h"
#include "msianalyzer/readconfig.h"
#include "tests/support/faultmachine.h"
#include "tests/support/itemlog.h"
#include "tests/support/machinetest.h"
#include "tests/support/productpackage.h"
#include "utility/iremoverepeatreg.h"
#include "utility/kvobject.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

constexpr std::u16string_view kProduct = u"{11111111-2222-3333-4444-555555555555}";
constexpr const char* kCode = "{11111111-2222-3333-4444-555555555555}";
constexpr std::u16string_view kPacked = u"11111111222233334444555555555555";
constexpr const char* kComponentId = "{AAAAAAAA-0000-0000-0000-000000000001}";
constexpr std::u16string_view kComponent = u"{AAAAAAAA-0000-0000-0000-000000000001}";
constexpr std::u16string_view kPackedComponent = u"AAAAAAAA000000000000000000000010";

std::string RuleFile(std::string_view lines) {
    std::string bytes = "\xFF\xFE";
    for (const char letter : lines) bytes += {letter, '\0'};
    return bytes;
}

class NoFilter final : public CKvObject<IRemoveRepeatReg> {
  public:
    std::int32_t IsKeySeen(const std::uint32_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsValueSeen(const std::uint32_t*, const char16_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsItemSeen(std::uint32_t, const char16_t*, bool, bool) override { return 0; }
    std::int32_t IsDirectorySeen(const char16_t*) override { return 0; }
};

class InstallDetails : public MachineTest {
  protected:
    InstallDetails() {
        package.Row("Property", {"ProductCode", kCode}).Row("Directory", {"INSTALLDIR", {}, "Tool"});
        package.Row("Component", {"cMain", kComponentId, "INSTALLDIR", 0, {}});
        package.Row("Component", {"cAway", "{BBBBBBBB-0000-0000-0000-000000000001}", "INSTALLDIR", 0, {}});
        builder.File(u"C:\\Tool\\tool.exe", "12345");
        InstallComponent(builder, kProduct, kComponent, u"C:\\Tool\\tool.exe");
    }
    Lines Analyze(std::initializer_list<const char*> actions = {}) {
        log.lines.clear();
        int number = 0;
        for (const char* action : actions) package.Row("InstallExecuteSequence", {action, {}, ++number});
        builder.File(u"C:\\a.msi", package.Write());
        Start();
        const RefPtr<NoFilter> filter = RefPtr<NoFilter>::Adopt(new NoFilter);
        const std::unique_ptr<IMSIAnalyzer> analyzer(CreateMSIAnalyzer());
        EXPECT_TRUE(Succeeded(analyzer->Open(u"C:\\a.msi", source, &ItemLog::OnItem, &log, filter.Get())));
        EXPECT_TRUE(Succeeded(analyzer->Analyze()));
        return log.lines;
    }

    PackageWriter package = ProductTables();
    const char16_t* source = u"";
    ItemLog log;
};

TEST_F(InstallDetails, Product_IsFoundInAllOfTheBooks) {
    const std::u16string books = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
    const std::u16string product(kPacked);
    package.Row("Property", {"UpgradeCode", kComponentId});
    for (const std::u16string id : {u"S-1-5-18", u"S-1-5-21"}) {
        const std::u16string key = books + id + u"\\Products\\" + product;
        builder.Text(key + u"\\InstallProperties", u"DisplayName", id).Key(key + u"\\Patches\\P" + id);
    }
    builder.Text(books + u"S-1-5-21\\Patches\\PS-1-5-18", u"LocalPackage", u"p.msp");
    builder.Key(books + u"S-1-5-21\\Patches\\Other");
    const std::u16string uninstall = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    builder.Text(uninstall + std::u16string(kProduct), u"a", u"1").Key(uninstall + u"{11111111");
    builder.Text(uninstall + std::u16string(kProduct) + u"_more", u"b", u"2");
    const std::u16string classes = u"HKLM\\SOFTWARE\\Classes\\Installer\\";
    builder.ExpandText(classes + u"Products\\" + product, u"ProductIcon", u"%ICONS%\\\\tool.ico");
    builder.Key(classes + u"Features\\" + product).Key(classes + u"UpgradeCodes\\" + std::u16string(kPackedComponent));
    builder.Key(classes + u"Patches\\PS-1-5-21").Key(classes + u"Components\\" + std::u16string(kPackedComponent));
    // The quote stays in front of the drive, so that there is no such file.
    const std::u16string user = u"HKCU\\Software\\Microsoft\\Installer\\Products\\" + product;
    builder.Text(user, u"ProductIcon", u"\"C:\\Tool\\tool.exe\"");
    builder.Environment(u"ICONS", u"C:\\Icons").File(u"C:\\Icons\\tool.ico", "123");
    const std::u16string cached = u"C:\\Windows\\Installer\\" + std::u16string(kProduct);
    builder.File(cached + u"\\sub\\i.ico", "1").File(cached + u"\\a.exe", "22");
    builder.File(u"C:\\Users\\User\\AppData\\Local\\Downloaded Installations\\T\\t.msi", "333");
    source = u"c:\\users\\User\\AppData\\Local\\downloaded installations\\T";
    const std::string packed = "11111111222233334444555555555555";
    const std::string code = kCode;
    const std::string icon = "Software\\Microsoft\\Installer\\Products\\" + packed;
    Lines expected = {
        "9 open|" + packed + "||0||1",
        "9 open|" + packed + "\\InstallProperties||0||1",
        "9 open|" + packed + "\\InstallProperties|DisplayName|1|S-1-5-18|1",
        "9 open|" + packed + "\\Patches||0||1",
        "9 open|" + packed + "\\Patches\\PS-1-5-18||0||1",
        "9 open|" + packed + "||0||1",
        "9 open|" + packed + "\\InstallProperties||0||1",
        "9 open|" + packed + "\\InstallProperties|DisplayName|1|S-1-5-21|1",
        "9 open|" + packed + "\\Patches||0||1",
        "9 open|" + packed + "\\Patches\\PS-1-5-21||0||1",
        "9 end",
        "10 open|" + code + "||0||1",
        "10 open|" + code + "|a|1|1|1",
        "10 open|" + code + "_more||0||1",
        "10 open|" + code + "_more|b|1|2|1",
        "10 end",
        "12 open|PS-1-5-18||0||1",
        "12 open|PS-1-5-18|LocalPackage|1|p.msp|1",
        "12 end",
        "4 HKCR|Installer\\Products\\" + packed + "||0||0",
        "4 HKCR|Installer\\Products\\" + packed + "|ProductIcon|2|%ICONS%\\\\tool.ico|0",
        "4 end",
        "folder C:\\Icons\\ 0",
        "file C:\\Icons\\tool.ico 3",
        "4 HKCR|Installer\\Features\\" + packed + "||0||0",
        "4 end",
        "4 HKCR|Installer\\UpgradeCodes\\AAAAAAAA000000000000000000000010||0||0",
        "4 end",
        "4 HKCR|Installer\\Patches\\PS-1-5-21||0||0",
        "4 end",
        "4 HKCR|Installer\\Components\\AAAAAAAA000000000000000000000010||0||0",
        "4 end",
        "4 HKCU|" + icon + "||0||1",
        "4 HKCU|" + icon + "|ProductIcon|1|\"C:\\Tool\\tool.exe\"|1",
        "4 end",
        "4 HKCU|" + icon + "||0||0",
        "4 HKCU|" + icon + "|ProductIcon|1|\"C:\\Tool\\tool.exe\"|0",
        "4 end",
        "folder C:\\Windows\\Installer\\" + code + " 0",
        "file C:\\Windows\\Installer\\" + code + "\\a.exe 2",
        "file C:\\Windows\\Installer\\" + code + "\\sub\\i.ico 1",
        "folder c:\\users\\User\\AppData\\Local\\downloaded installations\\T 0",
        "file c:\\users\\User\\AppData\\Local\\downloaded installations\\T\\t.msi 3",
    };
    EXPECT_THAT(Analyze({"RegisterProduct"}), ElementsAreArray(expected));
    // A source that is no downloaded one is left alone, whatever the length of its path.
    source = u"D:\\This is a folder of packages with a long path, and lies on the disc\\T";
    builder.File(source + std::u16string(u"\\t.msi"), "333");
    expected.resize(expected.size() - 2);
    EXPECT_THAT(Analyze(), ElementsAreArray(expected));
}

TEST_F(InstallDetails, ComponentsProgIdsAndAssemblies_AreFoundByTheirNames) {
    const std::u16string classes = u"HKLM\\SOFTWARE\\Classes\\";
    builder.Text(classes + u"Tool.Doc\\CLSID", u"", u"{C}");
    builder.Key(classes + u"Installer\\Components\\" + std::u16string(kPackedComponent));
    package.Row("ProgId", {"Tool.Doc", {}, {}, {}, {}, {}}).Row("ProgId", {"Tool.None", {}, {}, {}, {}, {}});
    package.Row("PublishComponent", {kComponentId});
    const std::u16string winners = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SideBySide\\Winners\\";
    builder.Text(winners + u"X86_maker.tool_0123_none\\9.0", u"9.0.1.2", u"1")
        .Text(winners + u"x86_maker.tool_0123_x\\9.0", u"9.0.1.2", u"2");
    builder.Text(winners + u"X86_maker.tool_0123_none\\9.0", u"", u"9.0.1.2");
    builder.File(u"C:\\Windows\\winsxs\\Manifests\\x86_Maker.Tool_0123_9.0.1.2_none.manifest", "1234");
    builder.File(u"C:\\Windows\\winsxs\\Manifests\\x86_Maker.Tool_0123_9.0.1.3_none.manifest", "1234");
    package.Row("MsiAssembly", {"cMain", 1});
    package.Row("MsiAssembly", {"cAway", 1});
    const auto names = [this](const char* component, const char* version) {
        package.Row("MsiAssemblyName", {component, "Name", "Maker.Tool"})
            .Row("MsiAssemblyName", {component, "version", version});
        package.Row("MsiAssemblyName", {component, "PublicKeyToken", "0123"})
            .Row("MsiAssemblyName", {component, "type", "win32"});
        package.Row("MsiAssemblyName", {component, "processorArchitecture", "x86"});
    };
    names("cMain", "9.0.1.2");
    names("cAway", "9.0.1.3");
    names("cShort", "8.1");
    package.Row("Component", {"cShort", kComponentId, "INSTALLDIR", 4, {}}).Row("MsiAssembly", {"cShort", 1});
    const std::string winner =
        "17 HKLM|SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SideBySide\\Winners\\X86_maker.tool_0123_none\\9.0|";
    const Lines expected = {
        "11 open|AAAAAAAA000000000000000000000010||0||1",
        "11 open|AAAAAAAA000000000000000000000010|11111111222233334444555555555555|1|C:\\Tool\\tool.exe|1",
        "11 open|AAAAAAAA000000000000000000000010||0||1",  // of the second row with that code
        "11 open|AAAAAAAA000000000000000000000010|11111111222233334444555555555555|1|C:\\Tool\\tool.exe|1",
        "11 end",
        "4 HKCR|Tool.Doc||0||1",
        "4 HKCR|Tool.Doc\\CLSID||0||1",
        "4 HKCR|Tool.Doc\\CLSID||1|{C}|1",
        "4 end",
        "4 HKCR|Installer\\Components\\AAAAAAAA000000000000000000000010||0||0",
        "4 end",
        winner + "9.0.1.2|1|1|1",
        winner + "|1|9.0.1.2|1",
        "17 end",
        "folder C:\\Windows\\winsxs\\Manifests 0",
        "folder C:\\Windows\\winsxs\\Manifests 0",
        "file C:\\Windows\\winsxs\\Manifests\\x86_Maker.Tool_0123_9.0.1.2_none.manifest 4",
    };
    EXPECT_THAT(Analyze({"ProcessComponents", "RegisterProgIdInfo", "PublishComponents", "MsiPublishAssemblies"}),
                ElementsAreArray(expected));
}

TEST_F(InstallDetails, HelpNamespaces_AreReportedWithTheirFiles) {
    const std::u16string folder = u"C:\\ProgramData\\Microsoft Help\\";
    builder.File(folder + u"MS.TOOL.hxn", "1").File(folder + u"sub\\MS.TOOL.x", "1").File(folder + u"other.hxn", "1");
    builder.File(u"C:\\Users\\User\\AppData\\Roaming\\Microsoft Help\\MS.BARE_1.hxd", "22");
    package.Row("File", {"fHelp", "cMain", "H~1|help.hxs", 1, 0}).Row("File", {"fAway", "cAway", "away.hxs", 1, 0});
    const auto row = [this](const char* key, const char* name, const char* file, PackageWriter::Cell description) {
        package.Row("HelpNamespace", {key, name, file, description});
    };
    row("n1", "MS.TOOL", "fHelp", "Tool");
    row("n2", "MS.BARE", "fHelp", {});
    row("n3", "MS.AWAY", "fAway", "Away");
    row("n4", "MS.LOST", "none", "Lost");
    const Lines expected = {
        "folder C:\\ProgramData\\Microsoft Help 0",
        "file C:\\ProgramData\\Microsoft Help\\MS.TOOL.hxn 1",
        "folder C:\\Users\\User\\AppData\\Roaming\\Microsoft Help 0",
        "file C:\\Users\\User\\AppData\\Roaming\\Microsoft Help\\MS.BARE_1.hxd 2",
        "16 MS.TOOL|C:\\Tool\\help.hxs|Tool",
        "16 end",
    };
    EXPECT_THAT(Analyze(), ElementsAreArray(expected));
}

// Each line of a rule file with what it adds, in all of a file's order.
TEST_F(InstallDetails, RuleLines_AddWhatTheyName) {
    const Lines vendor32 = {"4 HKLM|SOFTWARE\\Vendor||0||0", "4 HKLM|SOFTWARE\\Vendor|Version|1|32|0"};
    const Lines vendor64 = {"4 HKLM|SOFTWARE\\Vendor||0||1", "4 HKLM|SOFTWARE\\Vendor|Version|1|64|1"};
    const Lines both = {vendor64[0], vendor64[1], vendor32[0], vendor32[1], "4 end"};
    struct Case {
        std::string rules;
        Lines lines;
    };
    const std::string longest = "x: " + std::string(4095 - 4, 'x');
    const Case cases[] = {
        {"REG: HKLM,SOFTWARE\\Vendor", both},
        {" reg :  HKLM , SOFTWARE\\Vendor , \r\n", both},
        {"Reg:HKLM,SOFTWARE\\Vendor,Version,", {vendor64[1], vendor32[1], "4 end"}},
        {"REG: HKLM,SOFTWARE\\Vendor,Version,1\nREG: HKLM,SOFTWARE\\None", {}},
        {"REG: HKU,SOFTWARE\\Vendor\nREG: hklm,SOFTWARE\\Vendor\nREG: INST,{1}\nREG: HKLM\nREG:,x\nREG: HKLM,,x", {}},
        {";REG: HKLM,SOFTWARE\\Vendor\nREG HKLM,SOFTWARE\\Vendor\n:\nREG:", {}},
        {"REG: Uins , Mine", {"10 open|Mine||0||1", "10 open|Mine|a|1|1|1", "10 end"}},
        {"FILE: [INSTALLDIR]tool.exe\nFILE: [WindowsFolder]foo.dll\nFILE: [NOWHERE]x", {"file C:\\Tool\\tool.exe 5"}},
        {"DIR: [NOWHERE]\nDIR: [INSTALLDIR]", {"folder C:\\Tool\\ 0", "file C:\\Tool\\tool.exe 5"}},
        {"DRIVER: a\nDRIVER: ,b\nDRIVER: a, [X]\nDRIVER: a,\nDRIVER: net, [INSTALLDIR]d.inf , 3 ,4",
         {"15 net|C:\\Tool\\d.inf|3 ,4", "15 end"}},
        {longest + "\r\nREG: HKLM,SOFTWARE\\Vendor", both},
        {"REG: HKLM,SOFTWARE\\Vendor," + std::string(5000, 'x') + "\nFILE: [INSTALLDIR]tool.exe",
         {"file C:\\Tool\\tool.exe 5"}},
    };
    const std::u16string software = u"HKLM\\SOFTWARE\\";
    builder.Text(software + u"Vendor", u"Version", u"64").Text(software + u"Wow6432Node\\Vendor", u"Version", u"32");
    builder.Text(software + u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Mine", u"a", u"1");
    for (const Case& test : cases) {
        builder.HostFile(u"Config\\" + std::u16string(kProduct) + u".INC", RuleFile(test.rules));
        EXPECT_THAT(Analyze(), ElementsAreArray(test.lines)) << test.rules.substr(0, 200);
    }
}

TEST_F(InstallDetails, RuleFiles_AreReadWholeOrRefused) {
    struct Case {
        std::string bytes;
        SmallCode result;
        std::size_t lines;
    };
    const std::string mark = "\xFF\xFE";
    const Case cases[] = {{mark, SmallCode::BadData, 0},
                          {mark + "a", SmallCode::Success, 0},
                          {std::string("a\0b\0", 4), SmallCode::BadData, 0},
                          {RuleFile("a\n\r\n") + "x", SmallCode::Success, 2},
                          {mark + std::string((4 << 20) - 2, 'x'), SmallCode::Success, 1},
                          {mark + std::string((4 << 20) - 1, 'x'), SmallCode::BadData, 0}};
    for (const Case& test : cases) {
        builder.HostFile(u"f", test.bytes);
        Start();
        CReadConfig file;
        EXPECT_EQ(Small(file.Open((std::u16string(GetExeFolder()) + u"\\f").c_str())), test.result) << &test - cases;
        std::size_t lines = 0;
        for (std::u16string_view line; Succeeded(file.ReadLine(line)); ++lines) EXPECT_LE(line.size(), 4095U);
        EXPECT_EQ(lines, test.lines) << &test - cases;
    }
    CReadConfig file;
    EXPECT_EQ(Small(file.Open(u"")), SmallCode::BadArgument);
    EXPECT_EQ(Small(file.Open(u"C:\\absent")), SmallCode::OpenFailure);
    auto machine = std::make_unique<FaultInjectingMachine>(builder.Build());
    machine->FailOperation(Area::ClosedLibraries, 1, kErrorAccessDenied);
    Start(std::move(machine));
    EXPECT_EQ(Small(file.Open(u"C:\\absent")), SmallCode::BufferAllocation);
}

TEST_F(InstallDetails, RuleFile_OfTheSuiteStandsInForThatOfTheProduct) {
    builder.HostFile(u"Config\\{90140000-0011-0000-0000-0000000FF1CE}.EXC", "");
    Start();
    const std::u16string config = std::u16string(GetExeFolder()) + u"\\Config\\";
    struct Case {
        const char16_t* name;
        bool include;
        const char16_t* file;
    };
    const Case cases[] = {
        {u"{90140000-0011-0000-0000-0000000FF1CE}", false, u"{90140000-0011-0000-0000-0000000FF1CE}.EXC"},
        {u"{90140000-0011-0000-0000-0000000FF1CE}", true, u"OFFICE_2010.INC"},
        {u"{1}", true, u"{1}.INC"}};
    for (const Case& test : cases) {
        std::u16string path;
        FindConfigFile(test.name, path, test.include);
        EXPECT_EQ(path, config + test.file);
    }
}

}  // namespace
}  // namespace roundup
