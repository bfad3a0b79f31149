// The command gather end to end, on the machine of the samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/host/runprogram.h"

namespace roundup {
namespace {

using nlohmann::ordered_json;
namespace fs = std::filesystem;

class GatherRun : public ::testing::Test {
  protected:
    ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "gather");
        arguments.insert(arguments.end(), {"--machine", ROUNDUP_SOURCE_DIR "/samples/machine"});
        return RunProgram(arguments, {"TMPDIR=" + (temp / ""), "TMP=" + (temp / "")});
    }
    // The paths of temporary files are of one run.
    static ordered_json Lasting(ordered_json gathered) {
        for (ordered_json& file : gathered["files"]) {
            if (file["type"] < 2) file = nullptr;
        }
        gathered.erase("result");
        for (ordered_json& below : gathered["subApplications"]) below = Lasting(below);
        return gathered;
    }

    TempFolder temp;
    TempFolder kept;
};

TEST_F(GatherRun, OfOneApplication_TellsItsTreeAndKeepsItsStores) {
    const ProgramRun run = Run({"fennmark ARCHIVER", "--format", "json", "--store", kept / "stores"});
    ASSERT_EQ(run.status, 0) << run.error;
    const ordered_json gathered = ordered_json::parse(run.output);
    std::string members;
    for (const auto& member : gathered.items()) members += member.key() + " ";
    EXPECT_EQ(members,
              "result key name flags size gatheredSize files directories systemDirectories store subApplications ");
    EXPECT_EQ(gathered["subApplications"].size(), 3U);
    std::uint64_t end = 0;
    for (const ordered_json& entry : gathered["store"]) {
        EXPECT_EQ(entry["offset"], end);
        end += entry["size"].get<std::uint64_t>();
    }
    EXPECT_EQ(fs::file_size(kept / "stores/Fennmark Archiver.cfg"), end);
    EXPECT_EQ(fs::file_size(kept / "stores/Fennmark Archiver.idx"), 24 * gathered["store"].size());
    for (const auto& left : fs::recursive_directory_iterator(temp.Path())) {
        EXPECT_TRUE(left.is_directory() || left.path().extension() == ".log") << left.path();
    }
}

TEST_F(GatherRun, OfAll_IsThatOfEachWhateverTheNumberOfThreads) {
    const ProgramRun run = Run({"--all", "--jobs", "1", "--format", "ndjson"});
    ASSERT_EQ(run.status, 0) << run.error;
    std::vector<ordered_json> lines;
    std::istringstream text(run.output);
    for (std::string line; std::getline(text, line);) {
        lines.push_back(Lasting(ordered_json::parse(line)));
        const std::string key = lines.back()["key"];
        const ProgramRun single = Run({key, "--format", "json"});
        EXPECT_EQ(Lasting(ordered_json::parse(single.output)), lines.back()) << key;
    }
    EXPECT_EQ(lines.size(), 11U);
    const ordered_json many = ordered_json::parse(Run({"--all", "--jobs", "8", "--format", "json"}).output);
    ASSERT_EQ(many.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(Lasting(many[i]), lines[i]);
}

TEST_F(GatherRun, Faults_AreToldOnStandardError) {
    const ProgramRun none = Run({"No such key", "--format", "json"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.output, "");
    EXPECT_NE(none.error.find("'No such key'"), std::string::npos) << none.error;
    std::ofstream(kept / "file") << "not a folder";
    for (const char* which : {"PustelginNotes", "--all"}) {
        const ProgramRun run = Run({which, "--store", kept / "file"});
        EXPECT_EQ(run.status, 1) << which;
        EXPECT_NE(run.error.find("cannot be made"), std::string::npos) << run.error;
    }
}

}  // namespace
}  // namespace roundup
