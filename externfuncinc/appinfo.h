// One record of the catalogue, as the host holds it.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "appcenter/app/iapp.h"
#include "externfuncinc/roundup.h"
#include "utility/kvobject.h"

namespace roundup {

// An element of the facade's array, which goes as a whole: the count is kept for the host's sake, and reaching 0
// destroys nothing. It holds its application itself: the array may outlive the facade's load, for an uninstall that
// runs, and must not show the icon that has its place in a later one.
class CAppInfo final : public IRmxApp {
  public:
    CAppInfo() = default;
    CAppInfo(const CAppInfo&) = delete;
    CAppInfo& operator=(const CAppInfo&) = delete;

    std::uint32_t AddRef() override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() override { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    _tagAppInfo* GetAppInfo() override { return this; }
    const std::uint8_t* GetAppIconData() override {
        return m_app ? reinterpret_cast<const std::uint8_t*>(m_app->GetIconData()) : nullptr;
    }
    std::uint32_t GetAppIconSize() override { return m_app ? m_app->GetIconDataSize() : 0; }

    // The application, which may be null, and its place in the bridge's array.
    void Bind(RefPtr<IApp> app, std::int32_t index) noexcept {
        m_app = std::move(app);
        m_index = index;
    }
    std::int32_t Index() const noexcept { return m_index; }

  private:
    RefPtr<IApp> m_app;  // null for an element that was never filled
    std::int32_t m_index = 0;
    std::atomic<std::uint32_t> m_count{1};
};

}  // namespace roundup
