// One record of the catalogue, as the host holds it.
#pragma once

#include <atomic>
#include <cstdint>

#include "externfuncinc/roundup.h"

namespace roundup {

class CRoundup;

// An element of the facade's array, which goes as a whole: the count is kept for the host's sake, and reaching 0
// destroys nothing.
class CAppInfo final : public IRmxApp {
  public:
    CAppInfo() = default;
    CAppInfo(const CAppInfo&) = delete;
    CAppInfo& operator=(const CAppInfo&) = delete;

    std::uint32_t AddRef() override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() override { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    _tagAppInfo* GetAppInfo() override { return this; }
    const std::uint8_t* GetAppIconData() override;
    std::uint32_t GetAppIconSize() override;

    // owner outlives the object and is not counted; index is the place in the bridge's array.
    void Bind(CRoundup* owner, std::int32_t index) noexcept {
        m_owner = owner;
        m_index = index;
    }
    std::int32_t Index() const noexcept { return m_index; }

  private:
    CRoundup* m_owner = nullptr;  // null for an element that was never filled
    std::int32_t m_index = 0;
    std::atomic<std::uint32_t> m_count{1};
};

}  // namespace roundup
