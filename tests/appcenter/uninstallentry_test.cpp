// What one entry of an Uninstall key becomes.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <tuple>

#include "appcenter/appeunm/displayicon.h"
#include "appcenter/appeunm/uninstallsource.h"
#include "tests/appcenter/catalogue_support.h"

namespace roundup {
namespace {

using namespace std::string_literals;

struct Value {
    const char16_t* name;
    std::uint32_t type;
    std::string bytes;
};
using Values = std::vector<Value>;

Value Text(const char16_t* name, std::u16string_view text) { return {name, kRegSz, TextBytes(text)}; }
Value Word(const char16_t* name, char low) { return {name, kRegDword, std::string{low, '\0', '\0', '\0'}}; }

class UninstallEntryTest : public CatalogueTest {
  protected:
    // The application of an entry with these values in the builder's machine.
    const CApp& AppOf(const Values& values, std::u16string_view key = u"Tool") {
        MachineBuilder machine = builder;
        machine.Key(Under(kMachineKey, key));
        for (const Value& value : values) machine.Value(Under(kMachineKey, key), value.name, value.type, value.bytes);
        m_app.Reset();
        m_app = ReadEntry(machine);
        return *m_app;
    }

  private:
    RefPtr<CApp> ReadEntry(const MachineBuilder& machine) {
        Start(machine.Build());
        const AppList list = ReadSource(kHkeyLocalMachine, true);
        if (list.size() != 1) throw std::logic_error("the entry was not read");
        return RefPtr<CApp>::Share(static_cast<CApp*>(list.front().Get()));
    }

    RefPtr<CApp> m_app;
};

TEST(ParseDisplayIcon, PathAndIndex_AreTakenApart) {
    const std::tuple<std::u16string_view, std::u16string_view, std::int32_t> cases[] = {
        {u"C:\\Tool\\tool.exe,3", u"C:\\Tool\\tool.exe", 3},
        {u"\"C:\\Tool\\tool.exe\",-101", u"C:\\Tool\\tool.exe", 101},
        {u"\"C:\\Tool\\tool.exe,7\"", u"C:\\Tool\\tool.exe", 7},
        {u"\"C:\\a,b\\tool.exe\" , - -2x9", u"C:\\a,b\\tool.exe", 2},
        {u"C:\\a,1\\tool.exe,2", u"C:\\a,1\\tool.exe", 2},
        {u"\"C:\\Tool\\tool.exe", u"C:\\Tool\\tool.exe", 0},
        {u"C:\\Tool\\tool.exe,99999999999", u"C:\\Tool\\tool.exe", 0x7FFFFFFF},
        {u",5", u"", 5},
    };
    for (const auto& [text, path, index] : cases) {
        const DisplayIcon icon = ParseDisplayIcon(text);
        EXPECT_EQ(icon.path, path) << testing::PrintToString(text);
        EXPECT_EQ(icon.index, index) << testing::PrintToString(text);
    }
}

TEST_F(UninstallEntryTest, Texts_GoToTheirFieldsWhateverTheirCase) {
    const CApp& app = AppOf({Text(u"displayname", u"Otter"), Text(u"DisplayVersion", u"1.2"),
                             Text(u"PUBLISHER", u"Otter Works"), Text(u"InstallDate", u"20240131"),
                             Text(u"LocalPackage", u"C:\\Windows\\Installer\\1.msi"), Text(u"InstallSource", u"D:\\")});
    EXPECT_EQ(app.pwszName.View(), u"Otter");
    EXPECT_EQ(app.pwszVersion.View(), u"1.2");
    EXPECT_EQ(app.pwszPublisher.View(), u"Otter Works");
    EXPECT_EQ(app.pwszInstallDate.View(), u"20240131");
    EXPECT_EQ(app.pwszMsiPath.View(), u"C:\\Windows\\Installer\\1.msi");
    EXPECT_EQ(app.pwszKeyString.View(), u"Tool");
    EXPECT_TRUE(app.pwszInstallSource.IsEmpty()) << "only products have one";
}

// Bytes of another type, length or end than a text should have must neither be read past nor lose the entry.
TEST_F(UninstallEntryTest, OddTextValues_EndAtTheirFirstZeroOrTheirLength) {
    const std::tuple<std::uint32_t, std::string, std::u16string_view> cases[] = {
        {kRegSz, "", u""},
        {kRegSz, "A\0B\0"s, u"AB"},
        {kRegSz, "A\0B"s, u"AB"},
        {kRegSz, "A\0\0\0B\0\0\0"s, u"A"},
        {kRegExpandSz, TextBytes(u"%windir%"), u"%windir%"},
        {kRegMultiSz, "A\0\0\0B\0\0\0\0\0"s, u"A"},
        {kRegMultiSz, "A\0B\0"s, u"AB"},
        {kRegNone, TextBytes(std::u16string(40000, u'x')), std::u16string_view()},
    };
    for (const auto& [type, bytes, name] : cases) {
        const CApp& app = AppOf({{u"DisplayName", type, bytes}});
        if (bytes.size() > 1000) {
            EXPECT_EQ(app.pwszName.Length(), 40000U);
        } else {
            EXPECT_EQ(app.pwszName.View(), name) << testing::PrintToString(bytes);
        }
    }
}

TEST_F(UninstallEntryTest, Size_IsKilobytesOrElseBytes) {
    const std::tuple<std::uint32_t, std::string, std::int64_t> cases[] = {
        {kRegDword, "\x00\x08\0\0"s, 2097152}, {kRegDword, "\xFF\xFF\xFF\xFF"s, 0xFFFFFFFFLL << 10},
        {kRegBinary, "\x02"s, 2048},           {kRegBinary, "\0\0\0\0\x01"s, 0x100000000LL},
        {kRegBinary, "123456789", 0},          {kRegSz, "", 0},
    };
    for (const auto& [type, bytes, size] : cases) {
        EXPECT_EQ(AppOf({{u"EstimatedSize", type, bytes}}).llEstimatedSize, size) << testing::PrintToString(bytes);
    }
}

TEST_F(UninstallEntryTest, Flags_TellWhatTheEntryIs) {
    const std::pair<Values, std::uint64_t> cases[] = {
        {{}, 0x201},
        {{Word(u"WindowsInstaller", 1)}, 0x205},
        {{{u"WindowsInstaller", kRegBinary, "\x01"}}, 0x205},
        {{{u"WindowsInstaller", kRegQword, "\x01\0\0\0\0\0\0\0"s}}, 0x201},
        {{Word(u"SystemComponent", 1)}, 0x203},
        {{Word(u"IsMinorUpgrade", 1)}, 0x203},
        {{Text(u"ReleaseType", u"HOTFIX")}, 0x203},
        {{Text(u"ReleaseType", u"Hotfix 2")}, 0x201},
        {{Text(u"ParentKeyName", u"Suite")}, 0x203},
        {{Text(u"ParentDisplayName", u"Suite")}, 0x203},
        {{Text(u"ParentDisplayName", u"")}, 0x201},
        {{Text(u"RegistryLocation", u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\Suite")}, 0x201},
    };
    for (const auto& [values, flags] : cases) {
        EXPECT_EQ(AppOf(values).qwFlags, flags) << (values.empty() ? "" : values[0].bytes);
    }
}

TEST_F(UninstallEntryTest, Parent_IsTheProductThatTheUpdateBooksName) {
    const std::tuple<std::u16string_view, std::u16string_view, std::u16string_view, std::u16string_view> cases[] = {
        {u"Suite", u"", u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\Runtime\\KB1", u"Runtime"},
        {u"", u"Suite", u"hkey_local_machine\\SOFTWARE\\Microsoft\\Updates\\Runtime", u"Runtime"},
        {u"Suite", u"key", u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\", u"Suite"},
        {u"Suite", u"", u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\\\KB1", u"Suite"},
        {u"Suite", u"", u"HKEY_CURRENT_USER\\Software\\Microsoft\\Updates\\Runtime", u"Suite"},
        {u"", u"", u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\Runtime", u""},
    };
    for (const auto& [name, key, location, parent] : cases) {
        const CApp& app =
            AppOf({Text(u"ParentDisplayName", name), Text(u"ParentKeyName", key), Text(u"RegistryLocation", location)});
        EXPECT_EQ(app.pwszParentDisplayName.View(), parent) << testing::PrintToString(location);
    }
}

TEST_F(UninstallEntryTest, Codes_ComeFromTheKeyNameAndTheList) {
    constexpr std::u16string_view kBraced = u"{00020D75-0000-0000-C000-000000000046}";
    const Guid code = ParseGuid(kBraced, GuidForm::Braced);
    EXPECT_EQ(AppOf({}, kBraced).ProductCode, code);
    EXPECT_EQ(AppOf({}, u"57D020000000000C00000000000064").ProductCode, Guid{}) << "30 digits";
    EXPECT_EQ(AppOf({}, FormatGuid(code, GuidForm::Packed)).ProductCode, code);
    EXPECT_EQ(AppOf({}, u"Tool").ProductCode, Guid{});

    const std::string one = TextBytes(kBraced);
    const std::string two = TextBytes(u"{00020D76-0000-0000-C000-000000000046}");
    const std::tuple<std::uint32_t, std::string, std::size_t> cases[] = {
        {kRegMultiSz, one + two + "\0\0"s, 2},
        {kRegMultiSz, "\0\0"s + one + "\0\0"s + two, 2},
        {kRegMultiSz, one + two.substr(0, two.size() - 2), 2},
        {kRegMultiSz, one + two.substr(0, two.size() - 3), 1},
        {kRegMultiSz, one + one + TextBytes(u"{00000000-0000-0000-0000-000000000000}"), 1},
        {kRegSz, one + two, 1},
    };
    for (const auto& [type, bytes, codes] : cases) {
        EXPECT_EQ(AppOf({{u"ProductCodes", type, bytes}}).RelatedCodes.size(), codes) << bytes.size();
    }
}

Value Location(std::u16string_view text) { return Text(u"InstallLocation", text); }
Value Command(std::u16string_view text) { return Text(u"UninstallString", text); }
Value Icon(std::u16string_view text) { return Text(u"DisplayIcon", text); }
Value Package(std::u16string_view text) { return Text(u"LocalPackage", text); }

TEST_F(UninstallEntryTest, Location_ComesFromTheFirstThatNamesOneAndIsNormalised) {
    builder.File(u"C:\\Tool\\tool.exe").File(u"C:\\Tool\\un.exe").Folder(u"C:\\Tool\\Data");
    builder.File(u"C:\\Two Words\\un.exe").File(u"C:\\root.exe");
    const struct {
        Values values;
        std::u16string_view location, original, program, icon, package;
    } cases[] = {
        {{Location(u"\"C:\\Tool\\tool.exe\"")}, u"C:\\Tool", {}, {}, {}, {}},
        {{Location(u"C:\\Gone\\gone.exe")}, u"C:\\Gone\\gone.exe", {}, {}, {}, {}},
        {{Location(u"c:\\WINDOWS\\")}, {}, {}, {}, {}, {}},
        {{Location(u"%ProgramFiles(x86)%\\")}, {}, {}, {}, {}, {}},
        {{Location(u"%ProgramFiles%\\Tool")}, u"C:\\Program Files\\Tool", {}, {}, {}, {}},
        {{Location(u"C:\\root.exe")}, {}, {}, {}, {}, {}},
        {{Text(u"LocationRoot", u"C:\\Root"), Text(u"Inno Setup: App Path", u"C:\\Inno")}, u"C:\\Inno", {}, {}, {}, {}},
        {{Text(u"LocationRoot", u"C:\\Root"), Location(u"")}, u"C:\\Root", {}, {}, {}, {}},
        {{Command(u"\"C:\\Tool\\un.exe\" /S")}, u"C:\\Tool", {}, u"C:\\Tool\\un.exe", {}, {}},
        {{Command(u"C:\\Two Words\\un.exe /S /x=1")}, u"C:\\Two Words", {}, u"C:\\Two Words\\un.exe", {}, {}},
        // The uninstaller's place comes before the icon's, and is what the location was first read as.
        {{Command(u"C:\\Tool\\un.exe"), Icon(u"\"C:\\Two Words\\un.exe\",-101")},
         u"C:\\Tool",
         u"C:\\Tool\\un.exe",
         u"C:\\Tool\\un.exe",
         u"C:\\Two Words\\un.exe",
         {}},
        {{Icon(u"C:\\Gone\\x.exe")}, u"C:\\Gone\\x.exe", u"C:\\Gone\\x.exe", {}, u"C:\\Gone\\x.exe", {}},
        {{Icon(u"C:\\Tool\\tool.exe,1")}, u"C:\\Tool", u"C:\\Tool\\tool.exe", {}, u"C:\\Tool\\tool.exe", {}},
        {{Icon(u"C:\\Tool/tool.exe"), Location(u"C:\\Tool\\Data\\")},
         u"C:\\Tool\\Data",
         u"C:\\Tool\\Data\\",
         {},
         u"C:\\Tool\\tool.exe",
         {}},
        // Nothing is expanded without a location.
        {{Package(u"%windir%\\1.msi")}, {}, {}, {}, {}, u"%windir%\\1.msi"},
        {{Package(u"%windir%\\1.msi"), Location(u"C:\\Tool\\")}, u"C:\\Tool", {}, {}, {}, u"C:\\Windows\\1.msi"},
    };
    for (const auto& one : cases) {
        const CApp& app = AppOf(one.values);
        const OwnedString* const fields[] = {&app.pwszInstallLoc, &app.pwszOriginalInstallLoc,
                                             &app.pwszUnInstallProgram, &app.pwszIconProgram, &app.pwszMsiPath};
        const std::u16string_view expected[] = {one.location, one.original, one.program, one.icon, one.package};
        for (std::size_t i = 0; i < std::size(fields); ++i) {
            EXPECT_EQ(fields[i]->View(), expected[i]) << i << testing::PrintToString(one.values[0].bytes);
        }
    }
}

TEST_F(UninstallEntryTest, IconFile_BecomesTheIcon) {
    builder.File(u"C:\\Tool\\tool.ico", "icon bytes");
    const CApp& app = AppOf({Text(u"DisplayIcon", u"C:\\Tool\\tool.ico")});
    ASSERT_EQ(app.dwIconDataSize, 10U);
    EXPECT_EQ(std::memcmp(app.pIconData.get(), "icon bytes", 10), 0);
}

}  // namespace
}  // namespace roundup
