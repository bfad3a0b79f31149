#include "utility/commandpaths.h"

#include <string>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class CommandPathsTest : public MachineTest {};

TEST_F(CommandPathsTest, CommandLine_GivesItsProgramOrNothing) {
    builder.File(u"C:\\Tool\\uninst.exe").File(u"C:\\Tool\\setup.exe").File(u"C:\\Tool\\setup.dll");
    builder.File(u"C:\\Program Files\\Tool\\uninst.exe").Short(u"C:\\Program Files", u"C:\\PROGRA~1");
    builder.File(u"C:\\Windows\\System32\\MsiExec.exe").File(u"C:\\Windows\\System32\\rundll32.exe");
    builder.Short(u"C:\\Windows\\System32\\MsiExec.exe", u"C:\\Windows\\System32\\other.exe");
    Start();
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {nullptr, nullptr},
        {u"", nullptr},
        {u"\"C:\\Tool\\uninst.exe\" /S", u"C:\\Tool\\uninst.exe"},
        {u"C:\\Program Files\\Tool\\uninst.exe   /S /X/Y", u"C:\\Program Files\\Tool\\uninst.exe"},
        {u"C:\\PROGRA~1\\Tool\\uninst.exe -x", u"C:\\Program Files\\Tool\\uninst.exe"},
        {u"C:\\Windows\\System32\\MsiExec.exe /X{GUID}", nullptr},
        {u"C:\\Windows\\System32\\other.exe /X{GUID}", nullptr},  // the long name counts
        {u"MsiExec.exe /X{GUID}", nullptr},
        {u"RunDll32 C:\\Tool\\setup.dll,Run \"C:\\Tool\\setup.exe\"", u"C:\\Tool\\setup.exe"},
        {u"\"C:\\Windows\\System32\\rundll32.exe\" C:\\Tool\\setup.dll,Run", u"C:\\Windows\\System32\\rundll32.exe"},
        {u"host /path=C:\\Tool\\setup.exe", u"C:\\Tool\\setup.exe"},
        {u"host /dir:C:\\Tool\\ /S setup.exe", u"C:\\Tool\\setup.exe"},
        {u"host C:\\None C:\\Tool setup.exe", nullptr},  // the first folder stays
        // Lines that follow the platform's rules for quotes, blanks and control characters, and plain ones beside them.
        {u"\"C:\\Tool\\uninst.exe\"/S", u"C:\\Tool\\uninst.exe"},
        {u"\"C:\\Tool\\uninst.exe", u"C:\\Tool\\uninst.exe"},
        {u"host\tC:\\Tool\\setup.exe\tx", u"C:\\Tool\\setup.exe"},
        {u"host C:\\Tool\\se\"t\"up.exe", u"C:\\Tool\\setup.exe"},
        {u"\"C:\\Program Files\\Tool\" -x  uninst.exe", u"C:\\Program Files\\Tool\\uninst.exe"},
        {u"C:\\Program Files\\Tool uninst.exe", nullptr},
    };
    for (const auto& [commandLine, path] : cases) {
        const CommandPaths paths(commandLine);
        const std::u16string_view expected = path != nullptr ? path : u"";
        const std::u16string_view line = commandLine != nullptr ? commandLine : u"null";
        const std::string shown(line.begin(), line.end());
        ASSERT_EQ(paths.First() != nullptr, path != nullptr) << shown;
        EXPECT_EQ(std::u16string_view(paths.First() != nullptr ? paths.First() : u""), expected) << shown;
        EXPECT_EQ(paths.First(), paths.Last());
    }
}

TEST_F(CommandPathsTest, HostileLengths_EndWithoutAPath) {
    builder.File(u"C:\\Tool\\uninst.exe");
    Start();
    for (const std::size_t length : {260U, 520U, 300000U}) {
        EXPECT_EQ(CommandPaths((u"C:\\" + std::u16string(length, u'x')).c_str()).First(), nullptr);
        EXPECT_EQ(CommandPaths(std::u16string(length, u'/').c_str()).First(), nullptr);
        const std::u16string switches = u"C:\\Tool\\uninst.exe " + std::u16string(length, u'/');
        EXPECT_NE(CommandPaths(switches.c_str()).First(), nullptr);
        std::u16string many = u"C:\\None\\uninst.exe";
        while (many.size() < length) many += u" /x";
        EXPECT_EQ(CommandPaths(many.c_str()).First(), nullptr);
    }
}

}  // namespace
}  // namespace roundup
