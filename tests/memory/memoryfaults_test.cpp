// A whole catalogue and all its gathers with one allocation failing, for allocations all along the way: nothing ends
// the process, nothing is told of that is not there, and nothing is missing once there is memory again.
#include <gtest/gtest.h>

#include <string>

#include "platform/filesystem.h"
#include "tests/memory/failingnew.h"
#include "tests/support/machinetest.h"
#include "tests/support/samplemachine.h"
#include "utility/utf.h"

namespace roundup {
namespace {

class MemoryFaults : public MachineTest {};

TEST_F(MemoryFaults, AnyAllocationFailing_EndsNoProcessAndTellsOfNothingThatIsNotThere) {
    const std::unique_ptr<Machine> sound = OpenSampleMachine();
    ASSERT_NE(sound, nullptr);
    Start(OpenSampleMachine());
    const std::size_t all = GatherWholeCatalogue().size();
    ASSERT_GT(all, 50U);
    // The first ones, and then some of the tens of thousands: which those are differs from run to run with the threads.
    bool fired = true;
    for (long n = 0; fired; n += n < 6 ? 1 : 3989) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        Start(OpenSampleMachine());
        FailAllocation(n);
        const CStringSet paths = GatherWholeCatalogue();
        fired = StopFailing();
        for (const OwnedString& path : paths) {
            EXPECT_NE(sound->Files().GetAttributes(path.Text()), kInvalidAttributes) << ToUtf8(path);
        }
    }
    Start(OpenSampleMachine());
    EXPECT_EQ(GatherWholeCatalogue().size(), all);
}

}  // namespace
}  // namespace roundup
