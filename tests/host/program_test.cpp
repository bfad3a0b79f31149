// The program end to end, on recorded folders.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/livemachine.h"
#include "tests/host/runprogram.h"
#include "tests/support/machinebuilder.h"

namespace roundup {
namespace {

constexpr const char16_t* kUninstall = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

std::u16string Entry(const std::u16string& key) { return kUninstall + key; }

class ProgramTest : public ::testing::Test {
  protected:
    void SetUp() override {
        MachineBuilder builder;
        builder.Text(Entry(u"Paint"), u"DisplayName", u"Aurora Paint")
            .Text(Entry(u"Paint"), u"DisplayVersion", u"2.4")
            .Text(Entry(u"Paint"), u"Publisher", u"Lumen, \"Works\"")
            .Text(Entry(u"Paint"), u"InstallDate", u"20240301")
            .Dword(Entry(u"Paint"), u"EstimatedSize", 2048)
            .Text(Entry(u"Hostile"), u"DisplayName", u"Red\x1b[31m\x202E \xD800 end")
            .Text(Entry(u"Wide"), u"DisplayName", u"\x65E5\x672C\x8A9E\x306E\x540D\x524D")
            .Text(Entry(u"Long"), u"DisplayName", std::u16string(400, u'n'));
        // Without anything to point at an entry is no application.
        for (const auto* key : {u"Paint", u"Hostile", u"Wide", u"Long"}) {
            builder.Text(Entry(key), u"LocalPackage", u"C:\\Windows\\Installer\\1.msi");
        }
        builder.WriteTo(machine);
    }

    ProgramRun Run(std::vector<std::string> arguments, const std::vector<std::string>& environment = {}) {
        arguments.insert(arguments.end(), {"--machine", machine});
        return RunProgram(arguments, environment);
    }

    TempFolder folder;
    std::string machine = folder / "machine";
};

TEST_F(ProgramTest, JsonOfAList_HoldsEveryMemberInOrderAndWholeTexts) {
    const ProgramRun run = Run({"list", "--format", "json"});
    ASSERT_EQ(run.status, 0) << run.error;
    const auto json = nlohmann::ordered_json::parse(run.output);
    ASSERT_EQ(json.at("applications").size(), 4U);
    EXPECT_TRUE(json.at("packages").empty());
    std::string members;
    for (const auto& member : json["applications"][0].items()) members += member.key() + " ";
    EXPECT_EQ(members,
              "index name publisher installDate key version code flags size installLocation realInstallLocation "
              "originalInstallLocation installSource package uninstallProgram iconProgram iconSize iconChecksum type "
              "typeDescription parentKey parentName subApplications ");
    EXPECT_EQ(json["applications"][1]["name"], std::string(400, 'n'));
    EXPECT_EQ(json["applications"][0]["name"], "Red\x1b[31m\xE2\x80\xAE \xEF\xBF\xBD end");
    const auto& paint = json["applications"][2];
    EXPECT_EQ(paint["index"], 2);
    EXPECT_EQ(paint["size"], 2048 * 1024);
    EXPECT_EQ(paint["flags"], 0x201);
    EXPECT_EQ(paint["code"], "");
}

TEST_F(ProgramTest, Listings_AreTheSameInEveryRunAndWriteNothingToStandardError) {
    for (const std::string format : {"table", "tree", "json", "ndjson", "csv"}) {
        const ProgramRun first = Run({"list", "--format", format});
        const ProgramRun second = Run({"list", "--format", format});
        EXPECT_EQ(first.status, 0) << format;
        EXPECT_EQ(first.output, second.output) << format;
        EXPECT_EQ(first.error, "") << format;
    }
    const std::string csv = Run({"list", "--format", "csv"}).output;
    EXPECT_NE(csv.find(",0,Aurora Paint,\"Lumen, \"\"Works\"\"\",20240301,Paint,2.4,"), std::string::npos) << csv;
}

TEST_F(ProgramTest, SampleMachine_HasPackagesAndIconsOfProducts) {
    std::filesystem::remove_all(machine);
    std::filesystem::copy(ROUNDUP_SOURCE_DIR "/samples/machine", machine, std::filesystem::copy_options::recursive);
    const auto json = nlohmann::json::parse(Run({"list", "--format", "json"}).output);
    EXPECT_FALSE(json.at("packages").empty());
    EXPECT_TRUE(std::ranges::any_of(json.at("applications"), [](const auto& app) { return app.at("iconSize") != 0; }));
    const std::string package = Run({"show", "Lutrine.Sketchbook_2.1.0.0_x64__k7m2q9t4w0xyz"}).output;
    EXPECT_NE(package.find(" 1.72 KB ("), std::string::npos) << package;
}

TEST_F(ProgramTest, ListingsForPeople_LetNoNameSteerTheTerminal) {
    for (const std::string format : {"table", "tree"}) {
        const ProgramRun run = Run({"list", "--format", format});
        EXPECT_EQ(run.output.find('\x1b'), std::string::npos) << format;
        EXPECT_EQ(run.output.find("\xE2\x80\xAE"), std::string::npos) << format;
        EXPECT_NE(run.output.find("Aurora Paint"), std::string::npos) << format;
        EXPECT_NE(run.output.find("2.00 MB"), std::string::npos) << format;
    }
}

TEST_F(ProgramTest, Why_NamesTheValueBehindEachField) {
    const std::string text = Run({"show", "Paint", "--why"}).output;
    const std::string blank(22, ' ');
    const std::string lines[] = {"Aurora Paint\n" + blank + "<- DisplayName of [1]\n",
                                 "<- InstallDate of [1]: 20240301\n", "<- EstimatedSize of [1]: 2048\n",
                                 blank + "[1] HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Paint"};
    for (const std::string& line : lines) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
}

TEST_F(ProgramTest, Diff_ReadsMachinesAndListsAlike) {
    const std::string list = folder / "before.json";
    std::string before = Run({"list", "--format", "json"}).output;
    const auto at = before.find("\"version\":\"2.4\"");
    ASSERT_NE(at, std::string::npos);
    before.replace(at, 15, "\"version\":\"2.3\"");
    const auto size = before.find("\"size\":2097152", at);
    ASSERT_NE(size, std::string::npos);
    std::ofstream(list) << before.replace(size, 14, "\"size\":2097151");
    const ProgramRun changed = RunProgram({"diff", list, machine});
    EXPECT_EQ(changed.output, "~ Aurora Paint  2.3 -> 2.4  (size)\n0 added, 0 removed, 1 changed\n") << changed.error;
    EXPECT_EQ(RunProgram({"diff", machine, machine, "--format", "json"}).output,
              "{\"added\":[],\"removed\":[],\"changed\":[]}\n");
    EXPECT_EQ(RunProgram({"diff", folder / "none", machine}).status, 1);
}

TEST_F(ProgramTest, Show_FindsKeyAndNameIgnoringCaseOrFails) {
    const ProgramRun json = Run({"show", "PAINT", "--format", "json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(nlohmann::json::parse(json.output)["name"], "Aurora Paint");
    const ProgramRun text = Run({"show", "paint", "--name", "aurora PAINT"});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("2024-03-01"), std::string::npos) << text.output;
    const ProgramRun absent = Run({"show", "paint", "--name", "Other"});
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.output, "");
    EXPECT_EQ(std::count(absent.error.begin(), absent.error.end(), '\n'), 1) << absent.error;
}

TEST_F(ProgramTest, WrongUsage_EndsWithTwoAndOneLine) {
    const std::vector<std::vector<std::string>> cases = {
        {}, {"lost"}, {"list", "--format", "xml"}, {"show"}, {"list", "--progress", "x"}, {"list", "extra"}};
    for (const auto& arguments : cases) {
        const ProgramRun run = RunProgram(arguments);
        EXPECT_EQ(run.status, 2) << (arguments.empty() ? "" : arguments.back());
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(std::count(run.error.begin(), run.error.end(), '\n'), 1) << run.error;
    }
    EXPECT_EQ(RunProgram({"--help"}).status, 0);
    EXPECT_EQ(RunProgram({"--version"}).output.rfind("roundup ", 0), 0U);
}

TEST_F(ProgramTest, SourceThatIsNoMachine_IsNamedAndNothingIsMadeInIt) {
    const std::string empty = folder / "empty";
    std::filesystem::create_directory(empty);
    const ProgramRun run = RunProgram({"list", "--machine", empty});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.error.find(empty), std::string::npos) << run.error;
    EXPECT_NE(run.error.find("machine.ini"), std::string::npos) << run.error;
    EXPECT_TRUE(std::filesystem::is_empty(empty));
    EXPECT_EQ(RunProgram({"list", "--machine", folder / "absent"}).status, 1);
    EXPECT_EQ(RunProgram({"list"}).status, OpenLiveMachine() != nullptr ? 0 : 1);
}

TEST_F(ProgramTest, BrokenSources_EndWithFileAndLine) {
    const struct {
        const char* file;
        const char* text;
        const char* told;
    } cases[] = {
        {"registry/z.reg", "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=dword:zz\n",
         "z.reg:4"},
        {"machine.ini", "[system]\narchitecture=mips\n", "machine.ini:2"},
    };
    for (const auto& broken : cases) {
        const std::string file = std::string("machine/") + broken.file;
        const std::string before = folder.Read(file);
        folder.Write(file, broken.text);
        const ProgramRun run = Run({"list"});
        EXPECT_EQ(run.status, 1) << broken.text;
        EXPECT_NE(run.error.find(broken.told), std::string::npos) << run.error;
        EXPECT_EQ(run.output, "");
        folder.Write(file, before.empty() ? "Windows Registry Editor Version 5.00\n" : before);
    }
}

}  // namespace
}  // namespace roundup
