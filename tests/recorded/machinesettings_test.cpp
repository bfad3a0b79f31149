#include "platform/recorded/machinesettings.h"

#include <gtest/gtest.h>

namespace roundup {
namespace {

TEST(MachineSettingsText, EverySectionIsRead) {
    MachineSettings settings;
    const SourceStatus status = ReadMachineSettings(
        "\xEF\xBB\xBF; a machine\r\n"
        "[System]\r\narchitecture=x86\nVersion = 6.1.7601\ncomputer=BOX\nuser=\xC3\x84nne\nprocessors=8\n"
        "[environment]\nTool=C:\\Tool=1\n"
        "[folders]\n38=D:\\Programs\n"
        "[reparse]\nC:\\Mount=D:\\Data\n"
        "[short]\nC:\\Long Name\\x=C:\\LONGNA~1\\x\n"
        "[attributes]\nC:\\a=0x22\nC:\\b=406\n"
        "[groups]\nUsers=BOX\\A; BOX\\B;;\nEmpty=\n"
        "[accounts]\nMACHINE\\SOFTWARE\\X=Ann\n"
        "[strings]\n@{p?ms}=Name\n"
        "[volumes]\nd=FAT\nE:=exFAT\n",
        "machine.ini", settings);
    ASSERT_FALSE(status) << status->Text();
    EXPECT_EQ(settings.architecture, kArchitectureIntel);
    EXPECT_EQ(settings.version.minor * 10000 + settings.version.build, 17601U);
    EXPECT_EQ(settings.user, u"\u00C4nne");
    EXPECT_EQ(settings.processors, 8U);
    EXPECT_EQ(settings.environment[0].second, u"C:\\Tool=1");
    EXPECT_EQ(settings.folders[0].first, 38U);
    EXPECT_EQ(settings.attributes[1].second, 0x406U);
    EXPECT_EQ(settings.groups[0].second, (std::vector<std::u16string>{u"BOX\\A", u"BOX\\B"}));
    EXPECT_EQ(settings.accounts[0].first, u"MACHINE\\SOFTWARE\\X");
    EXPECT_EQ(settings.volumes[1].first, u'E');

    MachineSettings again;
    ASSERT_FALSE(ReadMachineSettings(WriteMachineSettings(settings), "written", again));
    EXPECT_EQ(WriteMachineSettings(again), WriteMachineSettings(settings));
}

TEST(MachineSettingsText, FaultsTellTheirLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"a=b\n", "m.ini:1: a key stands in front of the first section"},
        {"[system]\n\narchitecture=arm\n", "m.ini:3: the architecture is x64 or x86, not \"arm\""},
        {"[system]\nversion=10.0.99999999999\n", "m.ini:2: a version is major.minor.build, not \"10.0.99999999999\""},
        {"[system]\nuser=..\\x\n", "m.ini:2: \"..\\x\" cannot be the name of a user"},
        {"[system]\ncolour=red\n", "m.ini:2: the section [system] has no key \"colour\""},
        {"[sytem]\n", "m.ini:1: there is no section [sytem]"},
        {"[attributes]\nC:\\x=123456789\n", "m.ini:2: \"123456789\" is no hexadecimal number of 32 bits"},
        {"[attributes]\nC:\\x=1_\n", "m.ini:2: \"1_\" is no hexadecimal number of 32 bits"},
        {"[short]\nC:\\a\\b=C:\\a~1\n", "m.ini:2: a short path has as many parts as the long one"},
        {"[volumes]\nCD=NTFS\n", "m.ini:2: \"CD\" is no drive letter"},
        {"[system]\n; \xFF\n", "m.ini:2: this is not UTF-8"},
    };
    for (const auto& [text, message] : cases) {
        MachineSettings settings;
        const SourceStatus status = ReadMachineSettings(text, "m.ini", settings);
        ASSERT_TRUE(status) << text;
        EXPECT_EQ(status->Text(), message);
    }
}

}  // namespace
}  // namespace roundup
