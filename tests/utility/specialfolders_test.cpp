#include "utility/specialfolders.h"

#include <string>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class SpecialFoldersTest : public MachineTest {};

std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

TEST_F(SpecialFoldersTest, NativeAnd32BitFolders_FollowTheArchitecture) {
    const struct {
        std::uint16_t architecture;
        std::uint32_t number;
        std::u16string_view path;
    } cases[] = {
        {kArchitectureAmd64, 37, u"C:\\Windows\\System32"}, {kArchitectureAmd64, 41, u"C:\\Windows\\SysWOW64"},
        {kArchitectureAmd64, 38, u"D:\\Programs"},          {kArchitectureIntel, 41, u"C:\\Windows\\System32"},
        {kArchitectureIntel, 38, u"C:\\Program Files"},     {kArchitectureIntel, 42, u"C:\\Program Files"},
    };
    for (const auto& c : cases) {
        builder = {};
        builder.Architecture(c.architecture).Environment(u"ProgramW6432", u"D:\\Programs");
        Start();
        const char16_t* path = GetSpecialFolder(c.number);
        ASSERT_NE(path, nullptr);
        EXPECT_EQ(std::u16string_view(path), c.path) << c.number;
    }
    EXPECT_EQ(GetSpecialFolder(12), nullptr);
    EXPECT_EQ(GetSpecialFolder(0xFFFFFFFFU), nullptr);
}

TEST_F(SpecialFoldersTest, Prefix_IsTheLongestWholeFolder) {
    Start();
    const struct {
        std::u16string_view path;
        std::uint32_t number;
        std::size_t length;
        bool special;
    } cases[] = {
        {u"C:\\Program Files\\Tool\\a.exe", 38, 16, false},
        {u"c:/program files (X86)/Tool", 0, 0, false},
        {u"c:\\program files (X86)/Tool", 42, 22, false},
        {u"C:\\Program Files\\Common Files\\x", 43, 29, false},
        {u"C:\\Program Files", 38, 16, true},
        {u"C:\\Program Files\\", 38, 16, true},
        {u"C:\\Program Files\\\\", 38, 16, false},
        {u"C:\\Program Filesystem\\x", 0, 0, false},
        {u"", 0, 0, false},
    };
    for (const auto& c : cases) {
        std::size_t length = 99;
        EXPECT_EQ(FindSpecialFolderPrefix(c.path, length), c.number) << Narrow(c.path);
        EXPECT_EQ(length, c.length) << Narrow(c.path);
        EXPECT_EQ(IsSpecialFolder(c.path), c.special) << Narrow(c.path);
    }
}

TEST_F(SpecialFoldersTest, SystemRoots_AreNeverAnApplicationsOwn) {
    Start();
    const struct {
        std::u16string_view path;
        bool systemRoot;
        bool inWindows;
        int programFiles;  // with what lies below
    } cases[] = {
        {u"C:\\", true, false, 0},
        {u"C:\\windows", true, true, 0},
        {u"C:\\Windows\\Tool", false, true, 0},
        {u"C:\\Windows/Tool", false, false, 0},
        {u"C:\\WindowsOld", false, false, 0},
        {u"C:\\Windows\\System32\\Tool", true, true, 0},
        {u"C:\\Windows\\System32x", false, true, 0},
        {u"C:\\Program Files", true, false, 2},
        {u"C:\\Program Files (x86)\\Tool", false, false, 1},
        {u"C:\\Program Files (x86", false, false, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(IsSystemRoot(c.path), c.systemRoot) << Narrow(c.path);
        EXPECT_EQ(IsUnderWindows(c.path, true), c.inWindows) << Narrow(c.path);
        EXPECT_EQ(ClassifyProgramFiles(c.path, true), c.programFiles) << Narrow(c.path);
        OwnedString path(c.path);
        DropIfSystemRoot(path);
        EXPECT_EQ(path.IsNull(), c.systemRoot);
    }
}

}  // namespace
}  // namespace roundup
