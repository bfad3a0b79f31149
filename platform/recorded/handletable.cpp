#include "platform/recorded/handletable.h"

namespace roundup {

std::uint64_t NextHandleValue() noexcept {
    // Handles of keys are numbers of their own, in which the top bit is clear.
    constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;
    static std::atomic<std::uint64_t> next{0};
    return kTopBit | 2 * (next.fetch_add(1, std::memory_order_relaxed) + 1);
}

}  // namespace roundup
