// An observer for uninstalls.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "externfuncinc/roundup.h"

namespace roundup {

// Told of the ends of uninstalls on their threads.
class DoneObserver final : public IRoundupObserver {
  public:
    struct Done {
        IRmxApp* record;
        std::uint32_t code;
        std::thread::id thread;
        std::u16string name;
        std::uint8_t icon;
    };

    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }
    void OnAppInfo(IRmxApp* app) override { records.push_back(app); }
    std::uint8_t OnProgress(std::uint32_t) override { return 1; }
    // The call stays inside until as many have come as are expected at once.
    void OnUnInstallDone(IRmxApp* app, std::uint32_t exitCode) override {
        std::unique_lock guard(m_lock);
        ++m_inside;
        const std::uint8_t icon = app->GetAppIconSize() == 1 ? app->GetAppIconData()[0] : std::uint8_t{0};
        m_done.push_back({app, exitCode, std::this_thread::get_id(), app->GetAppInfo()->wzName, icon});
        m_changed.notify_all();
        m_changed.wait(guard, [&] { return m_done.size() >= overlapping; });
        --m_inside;
        m_changed.notify_all();
    }
    // Until so many have come and none is inside: the observer may go then.
    std::vector<Done> WaitFor(std::size_t count) {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [&] { return m_done.size() >= count && m_inside == 0; });
        return m_done;
    }
    std::size_t Count() {
        const std::lock_guard guard(m_lock);
        return m_done.size();
    }

    std::size_t overlapping = 1;
    std::vector<IRmxApp*> records;  // of the last EnumApps

  private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    // Guarded by m_lock.
    std::vector<Done> m_done;
    int m_inside = 0;
};

}  // namespace roundup
