// A package that brings down the program, again and again, on the sample machine.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/host/runprogram.h"

namespace roundup {
namespace {

constexpr int kAborted = 128 + 6;

TEST(CrashingPackage, ProgramThatIsStartedAgain_PassesOverItTheThirdTime) {
    const TempFolder folder;
    const std::string machine = folder / "machine";
    std::filesystem::copy(ROUNDUP_SOURCE_DIR "/samples/machine", machine, std::filesystem::copy_options::recursive);
    std::string package;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(machine)) {
        if (entry.path().extension() == ".msi") package = std::max(package, entry.path().filename().string());
    }
    ASSERT_FALSE(package.empty());
    const auto run = [&] { return RunProgram({"list", "--machine", machine, "--format", "json"}); };
    folder.Write("machine/host/cache/test/TestAppCrash.ini", "[enum]\r\n" + package + "=1\r\n");
    for (const char* const attempts : {"1", "2"}) {
        const ProgramRun died = run();
        EXPECT_EQ(died.status, kAborted);
        EXPECT_TRUE(died.output.empty());
        const std::string counts = folder.Read("machine/host/cache/EnumRetry.ini");
        EXPECT_NE(counts.find(package + "=" + attempts + "\r\n"), std::string::npos) << counts;
    }
    const ProgramRun without = run();
    EXPECT_EQ(without.status, 0) << without.error;
    EXPECT_NE(without.output.find("\"applications\":[{"), std::string::npos);
    const std::string counts = folder.Read("machine/host/cache/EnumRetry.ini");
    EXPECT_NE(counts.find(package + "=2\r\n"), std::string::npos) << counts;
    EXPECT_NE(counts.find(".msi=0\r\n"), std::string::npos) << "the others were read to their end: " << counts;
}

}  // namespace
}  // namespace roundup
