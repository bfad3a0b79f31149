// A whole catalogue and all its gathers with one allocation failing, for allocations all along the way: nothing ends
// the process, nothing is told of that is not there, and nothing is missing once there is memory again.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/filesystem.h"
#include "tests/support/machinetest.h"
#include "tests/support/samplemachine.h"
#include "utility/utf.h"

namespace {

constexpr long kNone = -1;
// Allocations until the one that fails, on whatever thread; kNone or less: none does.
std::atomic<long> g_untilFailure{kNone};

void* Allocate(std::size_t size) noexcept {
    if (g_untilFailure.load(std::memory_order_relaxed) >= 0 && g_untilFailure.fetch_sub(1) == 0) return nullptr;
    return std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
    void* const block = Allocate(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

namespace roundup {
namespace {

class MemoryFaults : public MachineTest {};

TEST_F(MemoryFaults, AnyAllocationFailing_EndsNoProcessAndTellsOfNothingThatIsNotThere) {
    const std::unique_ptr<Machine> sound = OpenSampleMachine();
    ASSERT_NE(sound, nullptr);
    Start(OpenSampleMachine());
    const std::size_t all = GatherWholeCatalogue().size();
    ASSERT_GT(all, 50U);
    // All of the first ones, and then some of the tens of thousands; a prime step falls on different places each time.
    bool fired = true;
    for (long n = 0; fired; n += n < 30 ? 1 : 1499) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        Start(OpenSampleMachine());
        g_untilFailure = n;
        const CStringSet paths = GatherWholeCatalogue();
        fired = g_untilFailure.exchange(kNone) < 0;
        for (const OwnedString& path : paths) {
            EXPECT_NE(sound->Files().GetAttributes(path.Text()), kInvalidAttributes) << ToUtf8(path);
        }
    }
    Start(OpenSampleMachine());
    EXPECT_EQ(GatherWholeCatalogue().size(), all);
}

}  // namespace
}  // namespace roundup
