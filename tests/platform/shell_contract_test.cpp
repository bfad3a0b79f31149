#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

using Names = std::vector<std::u16string>;

class ShellContract : public ContractTest {
  protected:
    std::u16string Folder(std::uint32_t number) {
        char16_t path[260] = u"untouched";
        const bool found = CurrentMachine().Shell().GetFolderPath(number, path);
        return found || std::u16string_view(path) != u"untouched" ? path : u"none";
    }
    Names Split(const char16_t* text) {
        Names arguments{u"left over"};
        EXPECT_TRUE(CurrentMachine().Shell().SplitCommandLine(text, arguments));
        return arguments;
    }
};

// Asked of the live machine too.
class CommandLineContract : public ShellContract {};

TEST_P(CommandLineContract, CommandLines_SplitAsThePlatformDoes) {
    struct Case {
        const char16_t* text;
        Names arguments;
    };
    const Case cases[] = {
        {u"a b\tc", {u"a", u"b", u"c"}},
        {u"  a", {u"", u"a"}},
        {u"\"C:\\Program Files\\x.exe\" /S", {u"C:\\Program Files\\x.exe", u"/S"}},
        {u"\"C:\\a b\\\" c", {u"C:\\a b\\", u"c"}},
        {u"a\"b c\"d e", {u"a\"b", u"cd e"}},
        {u"p \"a b\"c d", {u"p", u"a bc", u"d"}},
        {u"p a\\\\b \\\\\"c d\\\\\\\\\" e", {u"p", u"a\\\\b", u"\\c d\\\\", u"e"}},
        {u"p a\\\"b \\\\\\\"c", {u"p", u"a\"b", u"\\\"c"}},
        {u"p \"a\"\"b c\" d", {u"p", u"a\"b", u"c d"}},
        {u"p \"\" \"\"\"\" x", {u"p", u"", u"\" x"}},
        {u"p \"\"\"a b\"\"\" c", {u"p", u"\"a", u"b\"", u"c"}},
        {u"p \"a\\", {u"p", u"a\\"}},
    };
    StartKind();
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.text));
        EXPECT_EQ(Split(one.text), one.arguments);
    }
    char16_t program[260] = {};
    (void)CurrentMachine().System().GetHostExecutable(program, 260);
    EXPECT_EQ(Split(u""), Names{program});
}

TEST_P(ShellContract, Folders_AreThoseOfADefaultInstallation) {
    struct Case {
        std::uint32_t number;
        const char16_t* path;
    };
    const Case cases[] = {
        {0, u"C:\\Users\\Ann\\Desktop"},
        {5, u"C:\\Users\\Ann\\Documents"},
        {7, u"C:\\Users\\Ann\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
        {37, u"C:\\Windows\\System32"},
        {42, u"C:\\Program Files (x86)"},
        {44, u"C:\\Program Files (x86)\\Common Files"},
        {46, u"C:\\Users\\Public\\Documents"},
        {49, u"none"},
    };
    builder.User(u"Ann");
    StartKind();
    for (const Case& one : cases) EXPECT_EQ(Folder(one.number), one.path) << one.number;
}

TEST_P(ShellContract, Folders_FollowRegistryAndSettings) {
    constexpr const char16_t* kUser = u"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
    constexpr const char16_t* kNt = u"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const std::u16string user(kUser);
    builder.ExpandText(user + u"User Shell Folders", u"Personal", u"%USERPROFILE%\\Papers\\")
        .Text(user + u"Shell Folders", u"Personal", u"C:\\Not Used")
        .ExpandText(user + u"User Shell Folders", u"Favorites", u"%nobody%\\Favorites")
        .Text(user + u"Shell Folders", u"Favorites", u"C:\\Liked")
        .Text(user + u"Shell Folders", u"Desktop", u"\\\\server\\desk")
        .ExpandText(user + u"User Shell Folders", u"AppData", u"D:\\Roaming")
        .Text(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion", u"ProgramFilesDir", u"E:\\Programs")
        .Text(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", u"Common Desktop",
              u"C:\\Everyone")
        .Text(kNt, u"SystemRoot", u"C:\\WINNT")
        .ExpandText(std::u16string(kNt) + u"\\ProfileList", u"ProgramData", u"%SystemDrive%\\AllData")
        .SpecialFolder(43, u"F:\\Shared")
        .SpecialFolder(12, u"C:\\Twelve");
    Machine& machine = StartKind();
    const std::pair<std::uint32_t, const char16_t*> expected[] = {
        {5, u"C:\\Users\\User\\Papers"},
        {6, u"C:\\Liked"},
        {0, u"C:\\Users\\User\\Desktop"},
        {26, u"D:\\Roaming"},
        {11, u"D:\\Roaming\\Microsoft\\Windows\\Start Menu"},
        {38, u"E:\\Programs"},
        {25, u"C:\\Everyone"},
        {37, u"C:\\WINNT\\System32"},
        {35, u"C:\\AllData"},
        {43, u"F:\\Shared"},
        {12, u"C:\\Twelve"},
    };
    for (const auto& [number, path] : expected) EXPECT_EQ(Folder(number), path) << number;
    char16_t text[100] = {};
    (void)machine.System().ExpandEnvironment(u"%APPDATA%;%ProgramFiles%;%CommonProgramW6432%;%windir%", text, 100);
    EXPECT_EQ(std::u16string_view(text), u"D:\\Roaming;E:\\Programs;F:\\Shared;C:\\WINNT");
}

TEST_P(ShellContract, IndirectStrings_AreThoseOfTheSettings) {
    builder.String(u"@{Pack_1.0?ms-resource://Pack/Name}", u"Shown Name");
    IShell& shell = StartKind().Shell();
    char16_t text[11] = u"keep";
    EXPECT_FALSE(shell.LoadIndirectString(u"@shell32.dll,-1", text, 11));
    EXPECT_FALSE(shell.LoadIndirectString(u"@{Pack_1.0?ms-resource://Pack/Name}", text, 10));
    EXPECT_EQ(std::u16string_view(text), u"keep");
    EXPECT_TRUE(shell.LoadIndirectString(u"@{Pack_1.0?ms-resource://pack/Name}", text, 11));
    EXPECT_EQ(std::u16string_view(text), u"Shown Name");
    EXPECT_TRUE(shell.LoadIndirectString(u"plain", text, 11));
    EXPECT_EQ(std::u16string_view(text), u"plain");
}

INSTANTIATE_TEST_SUITE_P(Machines, CommandLineContract, ::testing::ValuesIn(AllMachineKinds()), KindName);
INSTANTIATE_TEST_SUITE_P(Machines, ShellContract, ::testing::Values(MachineKind::InMemory, MachineKind::RecordedFolder),
                         KindName);

}  // namespace
}  // namespace roundup
