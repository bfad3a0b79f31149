// The analysis of whole products: packages that the tests write, on machines that have them installed.
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <tuple>

#include "msianalyzer/formattedstring.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/systemfolderproperty.h"
#include "tests/support/itemlog.h"
#include "tests/support/machinetest.h"
#include "tests/support/productpackage.h"
#include "utility/filesearch.h"
#include "utility/formattext.h"
#include "utility/iremoverepeatreg.h"
#include "utility/kvobject.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

constexpr std::u16string_view kProduct = u"{11111111-2222-3333-4444-555555555555}";
constexpr const char* kCode = "{11111111-2222-3333-4444-555555555555}";

// The bytes of a rule file with these lines.
std::string RuleFile(std::string_view lines) {
    std::string bytes = "\xFF\xFE";
    for (const char letter : lines) bytes += {letter, '\0'};
    return bytes;
}

std::string Id(int number) { return "{AAAAAAAA-0000-0000-0000-00000000000" + std::to_string(number) + "}"; }

// Remembers what it was asked, as the filter of a gather does.
class Filter final : public CKvObject<IRemoveRepeatReg> {
  public:
    std::int32_t IsKeySeen(const std::uint32_t* root, const char16_t* key, bool view) override {
        return m_keys.emplace(*root, key, view).second ? 0 : 1;
    }
    std::int32_t IsValueSeen(const std::uint32_t* root, const char16_t* key, const char16_t* name, bool view) override {
        return m_values.emplace(*root, std::u16string(key) + u'|' + name, view).second ? 0 : 1;
    }
    std::int32_t IsItemSeen(std::uint32_t, const char16_t*, bool, bool) override { return 0; }
    std::int32_t IsDirectorySeen(const char16_t*) override { return 0; }

  private:
    using Seen = std::set<std::tuple<std::uint32_t, std::u16string, bool>>;
    Seen m_keys;
    Seen m_values;
};

class Analyzer : public MachineTest {
  protected:
    Analyzer() {
        package.Row("Property", {"ProductCode", kCode});
        package.Row("Feature", {"Main"});
        package.Row("Directory", {"TARGETDIR", {}, "SourceDir"});
        package.Row("Directory", {"ProgramFilesFolder", "TARGETDIR", "PFiles"});
        package.Row("Directory", {"INSTALLDIR", "ProgramFilesFolder", "TOOL~1|Tool:source"});
        package.Row("Directory", {"BINDIR", "INSTALLDIR", ".:bin"});
    }
    // A component of the feature. With a path it is installed there, and has a key file unless attributes say no.
    void Component(const char* key, int number, int attributes = 0, std::u16string_view path = {}) {
        package.Row("Component", {key, Id(number), "INSTALLDIR", attributes, {}});
        package.Row("FeatureComponents", {"Main", key});
        const std::string id = Id(number);
        if (!path.empty()) InstallComponent(builder, kProduct, std::u16string(id.begin(), id.end()), path);
    }
    void Sequence(std::initializer_list<const char*> actions) {
        int number = 100;
        for (const char* action : actions) package.Row("InstallExecuteSequence", {action, {}, number++});
    }
    ResultCode Analyze() {
        log.lines.clear();
        builder.File(u"C:\\a.msi", package.Write());
        Start();
        const RefPtr<Filter> filter = RefPtr<Filter>::Adopt(new Filter);
        const std::unique_ptr<IMSIAnalyzer> analyzer(CreateMSIAnalyzer());
        const ResultCode opened = analyzer->Open(u"C:\\a.msi", u"D:\\cd\\", &ItemLog::OnItem, &log, filter.Get());
        return Failed(opened) ? opened : analyzer->Analyze();
    }
    int FilesLeft() const {
        int count = 0;
        char16_t temp[260] = {};
        (void)CurrentMachine().System().GetTempFolder(temp, 260);
        for (FileSearch search((std::u16string(temp) + u"WAY-FERRY\\*").c_str()); search.Next();) {
            count += search.IsFolder() ? 0 : 1;
        }
        return count;
    }

    PackageWriter package = ProductTables();
    ItemLog log;
};

TEST_F(Analyzer, Files_AreThoseThatAreThereAndThoseThatMustBe) {
    Component("cMain", 1, 0, u"D:\\Else\\Tool\\tool.exe");
    Component("cGone", 2, 0, u"D:\\Else\\gone.exe");  // the books name it, and it is gone
    Component("cAway", 3);                            // not installed
    Component("cKey", 4, 4, u"02:\\SOFTWARE\\Tool\\Key");
    package.Row("FeatureComponents", {"Main", "cNowhere"}).Row("Component", {"cNoId", {}, "INSTALLDIR", 0, {}});
    package.Row("FeatureComponents", {"Main", "cNoId"});
    builder.File(u"D:\\Else\\Tool\\tool.exe", "1234").File(u"D:\\Else\\Tool\\Long name.txt");
    package.Row("File", {"f1", "cMain", "tool.exe", 100, 0})
        .Row("File", {"f2", "cMain", "LONG~1.TXT|Long name.txt", 7, 0});
    package.Row("File", {"f3", "cMain", "vital.dll", 9, 512}).Row("File", {"f4", "cMain", "absent.dll", 9, 0});
    package.Row("File", {"f5", "cGone", "gone.exe", 1, 512}).Row("File", {"f6", "cAway", "away.exe", 1, 512});
    package.Row("File", {"f7", "cKey", "beside.txt", 5, 512}).Row("File", {"f8", "cNoId", "noid.exe", 1, 512});
    Sequence({"InstallFiles", "InstallFilesX"});
    EXPECT_TRUE(Succeeded(Analyze()));
    // A component without a key file lies where the first one with the same directory really is.
    const Lines expected = {
        "file D:\\Else\\Tool\\tool.exe 100", "file D:\\Else\\Tool\\Long name.txt 7", "file D:\\Else\\Tool\\vital.dll 9",
        "folder D:\\Else\\Tool\\ 0",         "file D:\\Else\\Tool\\beside.txt 5",    "folder D:\\Else\\Tool\\ 0",
    };
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
}

TEST_F(Analyzer, Registry_IsReadFromTheMachine) {
    Component("cReg", 1, 4, u"02:\\x");
    Component("cWide", 2, 4 + 256, u"22:\\x");
    const auto row = [&](const char* key, int root, const char* path, const char* name, const char* value,
                         const char* component = "cReg") {
        const auto cell = [](const char* text) {
            return text != nullptr ? PackageWriter::Cell(text) : PackageWriter::Cell();
        };
        package.Row("Registry", {key, root, path, cell(name), cell(value), component});
    };
    const std::u16string tool = u"HKLM\\SOFTWARE\\Wow6432Node\\Tool";
    builder.Text(tool, u"Path", u"live")
        .Dword(tool, u"Size", 1)
        .Text(tool + u"\\Sub\\Deep", u"", u"d")
        .Key(tool + u"\\Two");
    builder.Text(u"HKLM\\SOFTWARE\\Tool", u"Path", u"wide").Text(u"HKCU\\Tool", u"Made by", u"user");
    builder.Text(u"HKLM\\SOFTWARE\\Classes\\.tl\\ShellNew", u"", u"n")
        .Text(u"HKLM\\SOFTWARE\\Classes\\.tl", u"", u"tl");
    const std::u16string uninstall = u"HKLM\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
    builder.Text(uninstall + u"\\Tool", u"DisplayName", u"T");
    builder.HostFile(u"Config\\{11111111-2222-3333-4444-555555555555}.EXC", RuleFile("REG: HKLM,SOFTWARE\\Left\r\n"));
    builder.Text(u"HKLM\\SOFTWARE\\Wow6432Node\\Left", u"a", u"value").Key(u"HKU\\.DEFAULT\\Tool");
    row("r01", 2, "SOFTWARE\\Tool", "Path", "from the table");  // a value, as it is on the machine
    row("r02", -1, "SOFTWARE\\[MAKER]", "Size", "#5");
    row("r03", 2, "SOFTWARE\\Tool", "Absent", "x");
    row("r04", 1, "Tool", "Made [BY]", "x");
    row("r05", 1, "Tool", "Made [BY]", "again");             // seen before
    row("r06", 2, "SOFTWARE\\Tool", "+", nullptr);           // the key with all beneath it
    row("r07", 2, "SOFTWARE\\Tool\\Sub", nullptr, nullptr);  // seen before
    row("r08", 0, ".tl\\ShellNew", "x", "y");                // the whole extension
    row("r09", 2, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UNINSTALL", nullptr, nullptr);
    row("r10", 2, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tool", "*", nullptr);
    row("r11", 2, "SOFTWARE\\Left", nullptr, nullptr);  // excluded as a key, not as a value
    row("r12", 2, "SOFTWARE\\Left", "a", "x");
    row("r13", 2, "[NOWHERE]\\Tool", "a", "x");
    row("r14", 3, ".DEFAULT\\Tool", "-", nullptr);
    row("r15", 2, "SOFTWARE\\Tool", "Path", "x", "cWide");
    row("r16", 2, "SOFTWARE\\None", nullptr, nullptr, "cWide");
    package.Row("Property", {"MAKER", "Tool"}).Row("Property", {"BY", "by"});
    Sequence({"WriteRegistryValues"});
    EXPECT_TRUE(Succeeded(Analyze()));
    const Lines expected = {
        "4 HKLM|SOFTWARE\\Tool|Path|1|live|0",
        "4 HKLM|SOFTWARE\\Tool|Size|4|01000000|0",
        "4 HKCU|Tool|Made by|1|user|0",
        "4 HKLM|SOFTWARE\\Tool||0||0",
        "4 HKLM|SOFTWARE\\Tool|Path|1|live|0",
        "4 HKLM|SOFTWARE\\Tool|Size|4|01000000|0",
        "4 HKLM|SOFTWARE\\Tool\\Sub||0||0",
        "4 HKLM|SOFTWARE\\Tool\\Sub\\Deep||0||0",
        "4 HKLM|SOFTWARE\\Tool\\Sub\\Deep||1|d|0",
        "4 HKLM|SOFTWARE\\Tool\\Two||0||0",
        "4 HKCR|.tl||0||0",
        "4 HKCR|.tl||1|tl|0",
        "4 HKCR|.tl\\ShellNew||0||0",
        "4 HKCR|.tl\\ShellNew||1|n|0",
        "4 HKLM|SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tool||0||0",
        "4 HKLM|SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tool|DisplayName|1|T|0",
        "4 HKLM|SOFTWARE\\Left|a|1|value|0",
        "4 HKU|.DEFAULT\\Tool||0||0",
        "4 end",
        "4 HKLM|SOFTWARE\\Tool|Path|1|wide|1",
        "4 end",
    };
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
    EXPECT_EQ(FilesLeft(), 0);
}

TEST_F(Analyzer, ShortcutsServicesModulesAndIniEntries_AreResolvedAndRead) {
    Component("cMain", 1, 0, u"C:\\Tool\\tool.exe");
    Component("cKey", 2, 4, u"02:\\x");
    builder.File(u"C:\\Tool\\tool.exe").Environment(u"WORK", u"W:\\work").Folder(u"C:\\Menu");
    for (const char16_t* link : {u"one", u"Two two", u"three", u"four"})
        builder.File(std::u16string(u"C:\\Menu\\") + link + u".lnk");
    builder.File(u"C:\\Tool\\set.ini", "[Main]\r\nKey=live\r\n");
    package.Row("Property", {"MENU", "C:\\Menu"}).Row("Property", {"ARGS", "/a"});
    const auto shortcut = [&](const char* key, const char* name, const char* target, PackageWriter::Cell icon,
                              PackageWriter::Cell index, const char* workDir, const char* component = "cMain") {
        package.Row("Shortcut", {key, "MENU", name, component, target, "[ARGS] x", "d", {}, icon, index, 1, workDir});
    };
    shortcut("s1", "one", "[INSTALLDIR]tool.exe", "tool.ico", 3, "INSTALLDIR");
    shortcut("s2", "TWO~1|Two two", "Main", {}, {}, "%WORK%");
    shortcut("s3", "gone", "Main", {}, {}, "INSTALLDIR");
    shortcut("s4", "three", "[NOWHERE]x", {}, {}, "INSTALLDIR");
    shortcut("s5", "three", "[#f1]", {}, {}, "NOWHERE");
    shortcut("s6", "four", "Main", {}, {}, "INSTALLDIR", "cKey");  // advertised, without a file to lead to
    package.Row("File", {"f1", "cMain", "tool.exe", 1, 0}).Row("File", {"f2", "cMain", "M~1.OCX|Module.ocx", 1, 0});
    package.Row("File", {"f3", "cKey", "other.ocx", 1, 0});
    const auto service = [&](const char* key, const char* component) {
        package.Row("ServiceInstall",
                    {key, "svc[ARGS]", "Service", 16, 2, {}, {}, "dep[~][~]", {}, {}, "-k", component, "Does"});
    };
    service("v1", "cMain");
    service("v2", "cKey");
    package.Row("SelfReg", {"f2", 1}).Row("SelfReg", {"f3", 1}).Row("SelfReg", {"f4", 1}).Row("SelfReg", {"f5", 1});
    package.Row("File", {"f5", "cMain", "never.ocx", 1, 0});  // behind a row that names no file
    const auto ini = [&](const char* key, const char* file, const char* section, const char* name) {
        package.Row("IniFile", {key, file, "INSTALLDIR", section, name, "from the table", 0, "cMain"});
    };
    ini("i1", "set.ini", "Main", "Key");
    ini("i2", "set.ini", "Main", "Other");
    ini("i3", "absent.ini", "Main", "Key");
    Sequence({"WriteIniValues", "SelfRegModules", "InstallServices", "CreateShortcuts"});
    EXPECT_TRUE(Succeeded(Analyze()));
    const Lines expected = {
        "14 C:\\Tool\\set.ini|Main|Key|live",
        "14 C:\\Tool\\set.ini|Main|Other|",
        "14 end",
        "8 C:\\Tool\\Module.ocx|",
        "8 end",
        "8 C:\\Tool\\other.ocx|",
        "8 end",
        "7 svc/a|Service|16|2|-2147483648||dep|||-k|C:\\Tool\\tool.exe|Does",
        "7 end",
        "6 C:\\Menu\\|one|C:\\Tool\\tool.exe|/a x|C:\\Tool\\|C:\\Windows\\Installer\\" + std::string(kCode) +
            "\\tool.ico|3",
        "6 C:\\Menu\\|Two two|C:\\Tool\\tool.exe|/a x|W:\\work||0",
        "6 C:\\Menu\\|three|C:\\Tool\\tool.exe|/a x|||0",
        "6 end",
    };
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
    EXPECT_EQ(FilesLeft(), 0);
}

// Classes lead to libraries, libraries to classes and interfaces, through the registry.
TEST_F(Analyzer, Classes_BringTheirLibrariesAndInterfaces) {
    Component("cMain", 1, 0, u"C:\\Tool\\tool.dll");
    builder.File(u"C:\\Tool\\tool.dll");
    const std::u16string classes = u"HKLM\\SOFTWARE\\Classes\\";
    const std::u16string wow = classes + u"Wow6432Node\\";
    const std::u16string lib = u"{CCCCCCCC-0000-0000-0000-000000000001}";
    builder.Text(wow + u"CLSID\\{C1}", u"", u"One").Text(wow + u"CLSID\\{C1}\\TypeLib", u"", lib + u"} and more");
    builder.Text(wow + u"CLSID\\{C1}\\Version", u"", u"1.0").Text(wow + u"CLSID\\{C2}", u"", u"Two");
    builder.Text(wow + u"CLSID\\{C2}\\TypeLib", u"", lib + u", no more");  // another library
    for (const char16_t* name : {u"{I1}", u"{I2}"}) {
        const std::u16string key = wow + u"Interface\\" + name + u"\\TypeLib";
        builder.Text(key, u"", lib).Text(key, u"Version", name == std::u16string_view(u"{I1}") ? u"1.0" : u"2.0");
    }
    builder.Text(classes + u"AppID\\{A1}", u"", u"App").Text(classes + u"TypeLib\\" + lib + u"\\1.0", u"", u"Lib");
    builder.Text(classes + u".tl", u"", u"tl")
        .Text(classes + u"MIME\\Database\\Content Type\\a/b", u"Extension", u".tl");
    const auto row = [&](const char* clsid, const char* context, const char* argument) {
        package.Row("Class", {clsid, context, "cMain", {}, {}, "{A1}", {}, {}, {}, {}, argument, "Main", {}});
    };
    row("{C1}", "InprocServer32", "/x [ProductCode]");
    row("{C2}", "InprocServer32", "/x [ProductCode]");
    row("{C3}", "LocalServer32", "");
    package.Row("TypeLib", {"{CCCCCCCC-0000-0000-0000-000000000001}", 0, "cMain", 0x200, {}, {}, "Main", {}});
    package.Row("Extension", {"none", "cMain", {}, {}, "Main"}).Row("Extension", {"tl", "cMain", {}, "a/b", "Main"});
    package.Row("MIME", {"a/b", "tl", {}});
    Sequence({"RegisterClassInfo", "RegisterTypeLibraries", "RegisterExtensionInfo", "RegisterMIMEInfo"});
    EXPECT_TRUE(Succeeded(Analyze()));
    const Lines expected = {
        "8 C:\\Tool\\tool.dll|",
        "8 C:\\Tool\\tool.dll|/x " + std::string(kCode),
        "8 end",
        "4 HKCR|CLSID\\{C1}||0||0",
        "4 HKCR|CLSID\\{C1}||1|One|0",
        "4 HKCR|CLSID\\{C1}\\TypeLib||0||0",
        "4 HKCR|CLSID\\{C1}\\TypeLib||1|{CCCCCCCC-0000-0000-0000-000000000001}} and more|0",
        "4 HKCR|CLSID\\{C1}\\Version||0||0",
        "4 HKCR|CLSID\\{C1}\\Version||1|1.0|0",
        "4 HKCR|TypeLib\\{CCCCCCCC-0000-0000-0000-000000000001}\\1.0||0||0",
        "4 HKCR|TypeLib\\{CCCCCCCC-0000-0000-0000-000000000001}\\1.0||1|Lib|0",
        "4 HKCR|CLSID\\{C2}||0||0",
        "4 HKCR|CLSID\\{C2}||1|Two|0",
        "4 HKCR|CLSID\\{C2}\\TypeLib||0||0",
        "4 HKCR|CLSID\\{C2}\\TypeLib||1|{CCCCCCCC-0000-0000-0000-000000000001}, no more|0",
        "4 end",
        "4 HKCR|AppID\\{A1}||0||0",
        "4 HKCR|AppID\\{A1}||1|App|0",
        "4 end",
        "4 HKCR|Interface\\{I1}||0||0",
        "4 HKCR|Interface\\{I1}\\TypeLib||0||0",
        "4 HKCR|Interface\\{I1}\\TypeLib||1|{CCCCCCCC-0000-0000-0000-000000000001}|0",
        "4 HKCR|Interface\\{I1}\\TypeLib|Version|1|1.0|0",
        "4 end",
        "4 end",  // the library's own key, of another version, is not there
        "4 end",
        "4 HKCR|Interface\\{I2}||0||0",
        "4 HKCR|Interface\\{I2}\\TypeLib||0||0",
        "4 HKCR|Interface\\{I2}\\TypeLib||1|{CCCCCCCC-0000-0000-0000-000000000001}|0",
        "4 HKCR|Interface\\{I2}\\TypeLib|Version|1|2.0|0",
        "4 end",
        "4 HKCR|.tl||0||0",
        "4 HKCR|.tl||1|tl|0",
        "4 end",
        "4 HKCR|MIME\\Database\\Content Type\\a/b||0||0",
        "4 HKCR|MIME\\Database\\Content Type\\a/b|Extension|1|.tl|0",
        "4 end",
    };
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
}

// The analyzer itself, behind the analysis: what its parts ask of it.
class Resolution : public Analyzer {
  protected:
    void Load() {
        builder.File(u"C:\\a.msi", package.Write());
        Start();
        analyzer = std::make_unique<CMSIAnalyzer>();
        ASSERT_TRUE(Succeeded(analyzer->Open(u"C:\\a.msi", u"D:\\cd\\", &ItemLog::OnItem, &log, filter.Get())));
        ASSERT_TRUE(Succeeded(analyzer->Analyze()));
    }
    void TearDown() override { analyzer.reset(); }
    // The path, or the small code of the failure.
    std::u16string Directory(std::u16string_view key) const {
        std::u16string path;
        const ResultCode rc = analyzer->ResolveDirectory(key, path);
        return Failed(rc) ? FormatText(u"%d", static_cast<int>(Small(rc))) : path;
    }
    std::u16string Formatted(std::u16string text) const {
        const ResultCode rc = CFormattedString(analyzer.get()).Format(text);
        return Failed(rc) ? FormatText(u"%d", static_cast<int>(Small(rc))) : text;
    }

    const RefPtr<Filter> filter = RefPtr<Filter>::Adopt(new Filter);
    std::unique_ptr<CMSIAnalyzer> analyzer;
};

TEST_F(Resolution, FormattedText_HasEveryForm) {
    Component("cMain", 1, 0, u"C:\\Tool\\tool.exe");
    builder.File(u"C:\\Tool\\tool.exe").Environment(u"VAR", std::u16string(300, u'v')).Environment(u"VOID", u"");
    package.Row("File", {"f1", "cMain", "TOOL~1.EXE|tool.exe", 1, 0}).Row("File", {"f2", "cNone", "x.exe", 1, 0});
    const auto property = [&](const char* name, const char* value) { package.Row("Property", {name, value}); };
    property("A", "va[lue");
    property("NAME", "VALUE");
    property("VALUE", "deep");
    property("SLASH", "C:\\X\\");
    property("SELF", "[SELF]");
    property("TWICE", "[TWICE][TWICE]");
    property("NEST", "[[NEST]]");
    property("EMPTY", "");
    property("set", "by the table");
    const auto action = [&](const char* name, int type, const char* source, const char* target, const char* condition) {
        package.Row("CustomAction", {name, type, source, target});
        package.Row("InstallExecuteSequence", {name, condition, 1});
    };
    action("a1", 51, "set", "by an action", "");
    action("a2", 51, "SET1", "[ProgramFilesFolder]x[BINDIR]", "");
    action("a3", 51, "SET2", "never", "NOT Installed");
    action("a4", 307, "SET3", "never", "");
    package.Row("CustomAction", {"a5", 51, "SET4", "in no sequence"});
    action("a6", 51, "SET5", "[NAME]", "");  // nothing of the table is known yet: the scan ends
    action("a7", 51, "SET6", "never", "");
    Load();
    std::u16string many;
    for (int i = 0; i < 1000; ++i) many += u"[\\x]";
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"", u""},
        {u"plain \\ ~ # text", u"plain \\ ~ # text"},
        {u"[NAME] and [VALUE]", u"VALUE and deep"},
        {u"[[NAME]]", u"deep"},
        {u"<[NAME]>[[NAME]]", u"<VALUE>deep"},
        {u"[SLASH]\\bin", u"C:\\X\\bin"},
        {u"[SLASH]bin[NAME]\\x", u"C:\\X\\binVALUE\\x"},
        {u"[ProgramFilesFolder]App", u"C:\\Program Files (x86)\\App"},
        {u"[BINDIR]x", u"C:\\Tool\\x"},
        {u"[#f1]", u"C:\\Tool\\tool.exe"},
        {u"[#f2]", u"1"},
        {u"[#none]", u"1"},
        {u"[!f1]", u"3"},
        {u"[$cMain]x", u"C:\\Tool\\x"},
        {u"[$cNone]", u"1"},
        {u"[%VAR]", std::u16string(300, u'v')},
        {u"[%VOID]x", u"x"},
        {u"[%NONE]", u"24"},
        {u"[\\{]", u"{"},
        {u"a[~]b", std::u16string(u"a\0b", 3)},
        {u"[;VolumeOfInstallSource]", u"D:\\"},
        {u"[;VolumeOfProperty@SLASH]x", u"C:\\x"},
        {u"[;VolumeOfProperty@NAME]", u"3"},
        {u"[;FilePath@tool.exe]", u"C:\\Tool\\"},
        {u"[;FilePathName@tool.exe]", u"C:\\Tool\\tool.exe"},
        {u"[;FilePathName@TOOL~1.EXE]", u"1"},
        {u"[;VolumeOfInstallSource@x]", u"3"},
        {u"[;Other]", u"3"},
        {u"[set][SET1]", u"by the tableC:\\Program Files (x86)\\xC:\\Program Files (x86)\\Tool\\"},
        {u"[SET2]", u"1"},
        {u"[SET3]", u"1"},
        {u"[SET4]", u"1"},
        {u"[SET6]", u"1"},
        {u"[EMPTY]", u""},
        {u"[name]", u"1"},
        {u"[]", u"1"},
        // Brackets that do not match stay, whatever else the text holds.
        {u"[", u"["},
        {u"[NAME", u"[NAME"},
        {u"[\\[]", u"[\\[]"},
        {u"][", u"1"},
        {u"[A]", u"1"},
        {u"[[[NAME]]]", u"1"},
        // Texts that do not end.
        {u"[SELF]", u"1"},
        {u"[TWICE]", u"1"},
        {u"[NEST]", u"1"},
        {many, std::u16string(1000, u'x')},
        {many.substr(4) + std::u16string(40'000, u'x') + u"[NAME]", std::u16string(40'999, u'x') + u"VALUE"},
        {many + u"[\\x]", u"1"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(Formatted(text), expected) << ToUtf8(text).substr(0, 100);
}

TEST_F(Resolution, Directories_EndAtWhatIsKnown) {
    package.Row("Directory", {"MENU", "ProgramMenuFolder", "PROGRA~1|Program Files:."})
        .Row("Directory", {"ProgramMenuFolder", "TARGETDIR", "."});
    package.Row("Directory", {"LOOSE", "TARGETDIR", "x"}).Row("Directory", {"ORPHAN", "NOWHERE", "x"});
    package.Row("Directory", {"C1", "C2", "."})
        .Row("Directory", {"C2", "C1", "."})
        .Row("Directory", {"BYPROP", "SET", "sub"})
        .Row("Directory", {"BARE", "BINDIR", ":source"});
    package.Row("Property", {"SET", "E:\\set"}).Row("Property", {"ORPHAN", ""});
    std::string parent = "INSTALLDIR";
    for (int i = 0; i < 100'000; ++i) {
        std::string key = "D" + std::to_string(i);
        package.Row("Directory", {key, parent, "."});
        parent = std::move(key);
    }
    Load();
    const std::pair<std::u16string_view, std::u16string_view> cases[] = {
        {u"BINDIR", u"C:\\Program Files (x86)\\Tool\\"},
        {u"BARE", u"C:\\Program Files (x86)\\Tool\\"},
        {u"MENU", u"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Program Files\\"},
        {u"BYPROP", u"E:\\set\\sub\\"},
        {u"SET", u"E:\\set\\"},
        {u"LOOSE", u"1"},
        {u"ORPHAN", u"1"},
        {u"", u"1"},
        {u"None", u"1"},
        {u"C1", u"1"},
        {u"C2", u"1"},
        {u"D500", u"C:\\Program Files (x86)\\Tool\\"},
        {u"D99999", u"1"},
        {u"System64Folder", u"C:\\Windows\\System32\\"},
        {u"System16Folder", u"1"},
        {u"WindowsVolume", u"C:\\"},
    };
    for (const auto& [key, path] : cases) EXPECT_EQ(Directory(key), path) << ToUtf8(key);
    for (const auto& [key, path] : cases) EXPECT_EQ(Directory(key), path) << ToUtf8(key);  // and as remembered
}

// Folders of both architectures and for both kinds of installation.
TEST_F(Resolution, PredefinedFolders_DependOnTheMachineAndTheInstallation) {
    struct Case {
        std::u16string_view name;
        std::u16string_view on64;
        std::u16string_view on32;
    };
    constexpr Case kCases[] = {
        {u"CommonFiles64Folder", u"F:\\43", u"3"},
        {u"CommonFilesFolder", u"F:\\44", u"F:\\43"},
        {u"ProgramFiles64Folder", u"F:\\38", u"3"},
        {u"ProgramFilesFolder", u"F:\\42", u"F:\\38"},
        {u"System16Folder", u"3", u"F:\\Windows\\System"},
        {u"System64Folder", u"F:\\Windows\\System32", u"3"},
        {u"SystemFolder", u"F:\\Windows\\SysWow64", u"F:\\Windows\\System32"},
        {u"WindowsFolder", u"F:\\36", u"F:\\36"},
        {u"WindowsVolume", u"F:\\", u"F:\\"},
        {u"AppDataFolder", u"F:\\26", u"F:\\26"},
        {u"systemfolder", u"3", u"3"},
        {u"", u"3", u"3"},
    };
    for (std::uint32_t number = 0; number < 64; ++number) builder.SpecialFolder(number, FormatText(u"F:\\%d", number));
    const auto resolve = [](std::u16string_view name, bool perMachine) {
        std::u16string path;
        const ResultCode rc = ResolveSystemFolder(name, path, perMachine);
        return Failed(rc) ? FormatText(u"%d", static_cast<int>(Small(rc))) : path;
    };
    for (const bool is64 : {true, false}) {
        builder.Architecture(is64 ? kArchitectureAmd64 : kArchitectureIntel);
        Start();
        for (const Case& c : kCases) EXPECT_EQ(resolve(c.name, true), is64 ? c.on64 : c.on32) << ToUtf8(c.name);
        EXPECT_EQ(resolve(u"DesktopFolder", true), u"F:\\25");
        EXPECT_EQ(resolve(u"DesktopFolder", false), u"F:\\16");
        EXPECT_EQ(resolve(u"TemplateFolder", true), u"F:\\45");
        EXPECT_EQ(resolve(u"TemplateFolder", false), u"F:\\21");
    }
}

// A key below another, deeper than a registry can be: the walk ends, and what follows is still there.
TEST_F(Analyzer, DeepKeys_EndAtTheDeepestLevelOfARegistry) {
    std::u16string key = u"HKLM\\SOFTWARE\\Deep";
    for (int i = 0; i < 600; ++i) key += u"\\k";
    builder.Key(key).Text(u"HKLM\\SOFTWARE\\Deep\\z", u"", u"last");
    Component("cReg", 1, 4 + 256, u"22:\\x");
    package.Row("Registry", {"r1", 2, "SOFTWARE\\Deep", {}, {}, "cReg"});
    Sequence({"WriteRegistryValues"});
    EXPECT_TRUE(Succeeded(Analyze()));
    ASSERT_EQ(log.lines.size(), 515U);
    EXPECT_EQ(log.lines[log.lines.size() - 2], "4 HKLM|SOFTWARE\\Deep\\z||1|last|1");
}

TEST_F(Analyzer, Sequence_RunsInItsOrderAndGoesOnBehindFailures) {
    Component("cMain", 1, 4 + 256, u"22:\\x");
    builder.Text(u"HKLM\\SOFTWARE\\Tool", u"", u"x")
        .File(u"C:\\Program Files (x86)\\Tool\\a.txt")
        .File(u"C:\\m\\l.lnk");
    package.Row("File", {"f1", "cMain", "a.txt", 1, 0}).Row("Registry", {"r1", 2, "SOFTWARE\\Tool", {}, {}, "cMain"});
    package.Row("Shortcut", {"s1", "NOWHERE", "l", "cMain", "Main", {}, {}, {}, {}, {}, {}, {}});
    package.Row("CustomAction", {"WriteIniValues", 1, {}, {}});
    builder.HostFile(u"Config\\{11111111-2222-3333-4444-555555555555}.INC", RuleFile("FILE: [INSTALLDIR]a.txt\r\n"));
    builder.File(u"C:\\Program Files (x86)\\Tool\\a.txt", "12");
    const auto at = [&](const char* action, PackageWriter::Cell number) {
        package.Row("InstallExecuteSequence", {action, {}, number});
    };
    at("InstallFiles", 7);
    at("WriteRegistryValues", -3);
    at("CreateShortcuts", 5);  // fails: its folder is nowhere
    at("WriteIniValues", 6);
    EXPECT_TRUE(Succeeded(Analyze()));
    const Lines expected = {"4 HKLM|SOFTWARE\\Tool||0||1",
                            "4 HKLM|SOFTWARE\\Tool||1|x|1",
                            "4 end",
                            "file C:\\Program Files (x86)\\Tool\\a.txt 1",
                            "folder C:\\Program Files (x86)\\Tool\\ 0",
                            "file C:\\Program Files (x86)\\Tool\\a.txt 2"};
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
    // The last row's failure is that of the analysis, and what would have come behind the sequence does not.
    at("CreateShortcuts", 99);
    EXPECT_EQ(Small(Analyze()), SmallCode::GeneralFailure);
    EXPECT_THAT(log.lines, ElementsAreArray(expected.begin(), expected.end() - 1));
}

TEST_F(Analyzer, BadPackages_FailAsTold) {
    const RefPtr<Filter> filter = RefPtr<Filter>::Adopt(new Filter);
    builder.File(u"C:\\bad.msi", "no database").File(u"C:\\nocode.msi", ProductTables().Write());
    Start();
    const std::unique_ptr<IMSIAnalyzer> analyzer(CreateMSIAnalyzer());
    EXPECT_EQ(Small(analyzer->Analyze()), SmallCode::ObjectMissing);
    const auto open = [&](const char16_t* path, IRemoveRepeatReg* repeat) {
        return Small(analyzer->Open(path, nullptr, &ItemLog::OnItem, &log, repeat));
    };
    EXPECT_EQ(open(nullptr, filter.Get()), SmallCode::BadArgument);
    EXPECT_EQ(open(u"C:\\nocode.msi", nullptr), SmallCode::BadArgument);
    EXPECT_EQ(open(u"C:\\bad.msi", filter.Get()), SmallCode::InstallerFailure);
    EXPECT_EQ(Small(analyzer->Analyze()), SmallCode::ObjectMissing);
    EXPECT_EQ(open(u"C:\\nocode.msi", filter.Get()), SmallCode::Success);
    EXPECT_EQ(Small(analyzer->Analyze()), SmallCode::GeneralFailure);
    EXPECT_TRUE(Succeeded(analyzer->Close()));
    builder.User(std::u16string(260, u'u'));  // whose temporary folder has too long a path
    Start();
    EXPECT_EQ(open(u"C:\\nocode.msi", filter.Get()), SmallCode::InstallerFailure);
    EXPECT_TRUE(log.lines.empty());
}

}  // namespace
}  // namespace roundup
