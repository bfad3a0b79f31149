#include "platform/recorded/handletable.h"

namespace roundup {

std::uint64_t NextHandleValue() noexcept {
    static std::atomic<std::uint64_t> next{0};
    return kHandleMark | 2 * (next.fetch_add(1, std::memory_order_relaxed) + 1);
}

}  // namespace roundup
