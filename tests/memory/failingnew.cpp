// Apart from the tests: a compiler that sees both sides takes std::free for the wrong end of what new has answered.
#include "tests/memory/failingnew.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr long kNever = -1;
// Allocations until the one that fails; kNever or less: none does.
std::atomic<long> g_untilFailure{kNever};

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

void FailAllocation(long behind) noexcept { g_untilFailure = behind; }

bool StopFailing() noexcept { return g_untilFailure.exchange(kNever) < 0; }

}  // namespace roundup
