// What the program tells of one application of a recorded machine: where it comes from, and what would uninstall it.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/runprogram.h"
#include "tests/support/machinebuilder.h"

namespace roundup {
namespace {

constexpr const char16_t* kUninstall = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr const char16_t* kProducts =
    u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Products\\";

class UninstallProgramTest : public ::testing::Test {
  protected:
    void SetUp() override {
        MachineBuilder builder;
        const auto entry = [&](const std::u16string& key) -> std::u16string {
            builder.Text(kUninstall + key, u"DisplayName", u"Name of " + key)
                .Text(kUninstall + key, u"InstallLocation", u"C:\\" + key);
            return kUninstall + key;
        };
        builder.Text(entry(u"Paint"), u"UninstallString", u"\"C:\\Paint\\u\x00E9\xD800.exe\" \x1b[2J /S");
        builder.Text(entry(u"Empty"), u"UninstallString", u"");
        entry(u"Silent");
        builder.Text(entry(u"Part"), u"UninstallString", u"part.exe")
            .Text(kUninstall + std::u16string(u"Part"), u"ParentDisplayName", u"Name of Paint");
        const std::u16string product = u"{00020D75-0000-0000-C000-000000000046}";
        builder.Dword(entry(product), u"WindowsInstaller", 1).Text(kUninstall + product, u"UninstallString", u"other");
        builder.Key(std::u16string(kProducts) + u"57D02000000000000C00000000000064");
        const std::u16string gone = u"{00020D76-0000-0000-C000-000000000046}";
        builder.Dword(entry(gone), u"WindowsInstaller", 1).Text(kUninstall + gone, u"UninstallString", u"other");
        builder.WriteTo(machine);
    }

    TempFolder folder;
    std::string machine = folder / "machine";
};

TEST_F(UninstallProgramTest, DryRun_TellsTheCommandAsJsonAndARunIsRefused) {
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string output;
        std::string shown;  // by the run that is refused
        std::string reason;
    } cases[] = {
        {{"PAINT"},
         0,
         "{\"present\":true,\"command\":\"\\\"C:\\\\Paint\\\\u\xC3\xA9\xEF\xBF\xBD.exe\\\" \\u001b[2J "
         "/S\",\"hidden\":false}\n",
         "\"C:\\Paint\\u\xC3\xA9\xEF\xBF\xBD.exe\" \xEF\xBF\xBD[2J /S\n",
         "not run"},
        {{"empty"}, 0, "{\"present\":true,\"command\":\"\",\"hidden\":false}\n", "", "not run"},
        {{"silent"}, 1, "{\"present\":false,\"command\":\"\",\"hidden\":false}\n", "", "no uninstall command"},
        {{"{00020d75-0000-0000-c000-000000000046}"},
         0,
         "{\"present\":true,\"command\":\"msiexec.exe /X{00020D75-0000-0000-C000-000000000046}\",\"hidden\":false}\n",
         "msiexec.exe /X{00020D75-0000-0000-C000-000000000046}\n",
         "not run"},
        {{"{00020D76-0000-0000-C000-000000000046}"},
         1,
         "{\"present\":false,\"command\":\"\",\"hidden\":false}\n",
         "",
         "has gone"},
        {{"part"},
         0,
         "{\"present\":true,\"command\":\"part.exe\",\"hidden\":false}\n",
         "",
         "is a part of 'Name of Paint'"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments = {"uninstall", "--machine", machine};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const ProgramRun run = RunProgram(arguments);
        EXPECT_EQ(run.status, 1) << c.arguments[0];
        EXPECT_EQ(run.output, c.shown) << c.arguments[0];
        EXPECT_NE(run.error.find(c.reason), std::string::npos) << run.error;
        EXPECT_EQ(std::count(run.error.begin(), run.error.end(), '\n'), 1) << run.error;
        arguments.emplace_back("--dry-run");
        const ProgramRun dry = RunProgram(arguments);
        EXPECT_EQ(dry.status, c.status) << c.arguments[0];
        EXPECT_EQ(dry.output, c.output);
        EXPECT_EQ(dry.error, "");
    }
}

TEST_F(UninstallProgramTest, Show_TellsOriginAndWhyAPartHangsWhereItDoes) {
    const ProgramRun part = RunProgram({"show", "part", "--machine", machine});
    EXPECT_NE(part.output.find("Name of Paint (by parent name)\n"), std::string::npos) << part.output;
    EXPECT_NE(part.output.find("Uninstall key of the machine, 64-bit view\n"), std::string::npos) << part.output;
    const ProgramRun whole = RunProgram({"show", "paint", "--machine", machine});
    EXPECT_NE(whole.output.find("Name of Part (by parent name)\n"), std::string::npos);
    EXPECT_EQ(whole.output.find("Part of"), std::string::npos) << whole.output;
}

}  // namespace
}  // namespace roundup
