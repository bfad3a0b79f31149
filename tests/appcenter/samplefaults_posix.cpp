// The sample machine, which has an application of each kind, with operations of every area failing: each gather ends,
// tells of nothing that is not there, and leaves no file of its own behind. The temporary folder of a process is named
// in the way of this system.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/faultmachine.h"
#include "tests/support/machinetest.h"
#include "tests/support/samplemachine.h"
#include "tests/support/tempfolder.h"
#include "utility/utf.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

class SampleFaults : public MachineTest {
  protected:
    SampleFaults() {
        const char* const before = std::getenv("TMPDIR");
        m_before = before != nullptr ? before : "";
        setenv("TMPDIR", m_temp.Text().c_str(), 1);
    }
    ~SampleFaults() override {
        Stop();
        m_before.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", m_before.c_str(), 1);
    }

    // The files in the temporary folder but the log, which go.
    std::vector<fs::path> TakeLeftovers() const {
        std::vector<fs::path> left;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_temp.Path())) {
            if (entry.is_regular_file() && entry.path().extension() != ".log") left.push_back(entry.path());
        }
        for (const fs::path& file : left) fs::remove(file);
        return left;
    }

  private:
    const TempFolder m_temp;
    std::string m_before;
};

TEST_F(SampleFaults, AnyOperationFailing_FindsNothingThatIsNotThereAndLeavesNothing) {
    std::unique_ptr<Machine> sound = OpenSampleMachine();
    ASSERT_NE(sound, nullptr);
    Start(OpenSampleMachine());
    ASSERT_GT(GatherWholeCatalogue().size(), 50U);
    for (const Area area : {Area::Registry, Area::Files, Area::Profile, Area::Shell, Area::Installer, Area::Security,
                            Area::System, Area::ClosedLibraries}) {
        bool fired = true;
        for (std::uint64_t n = 1; fired; n += 1 + n / 2) {
            SCOPED_TRACE("area " + std::to_string(static_cast<int>(area)) + ", operation " + std::to_string(n));
            auto owned = std::make_unique<FaultInjectingMachine>(OpenSampleMachine());
            FaultInjectingMachine& machine = *owned;
            machine.FailOperation(area, n, kErrorAccessDenied);
            Start(std::move(owned));
            for (const OwnedString& path : GatherWholeCatalogue()) {
                EXPECT_NE(sound->Files().GetAttributes(path.Text()), kInvalidAttributes) << ToUtf8(path);
            }
            fired = machine.HasFired();
            Stop();
            // The failing operation may be the one that deletes a file.
            const std::vector<fs::path> left = TakeLeftovers();
            EXPECT_LE(left.size(), area == Area::Files ? 1U : 0U) << left.front();
        }
    }
}

}  // namespace
}  // namespace roundup
