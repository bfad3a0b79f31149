#include "appcenter/appeunm/appmanager.h"

#include <algorithm>
#include <memory>

#include "appcenter/appeunm/runtimestandin.h"

namespace roundup {

CAppManager::CAppManager() : m_runtime(OpenRuntime()) {}

CAppManager::~CAppManager() = default;

std::int64_t CAppManager::LoadApp(std::uint8_t /*unused*/) { return -1; }

std::uint32_t CAppManager::GetLoadStatus() { return 0; }

std::uint64_t CAppManager::GetLoadedCount() {
    const LockGuard guard(m_lock);
    return m_loadedCount;
}

std::uint32_t CAppManager::GetCount() {
    const LockGuard guard(m_lock);
    return static_cast<std::uint32_t>(m_apps.size() + m_packages.size());
}

ResultCode CAppManager::GetApp(IApp** app, std::uint32_t index) {
    if (app == nullptr) return Fail(SmallCode::BadArgument);
    const LockGuard guard(m_lock);
    const bool isApp = index < m_apps.size();
    const AppList& list = isApp ? m_apps : m_packages;
    const std::size_t place = isApp ? index : index - m_apps.size();
    if (place >= list.size()) return FailQuiet(SmallCode::NoMoreItems);
    *app = RefPtr<IApp>(list[place]).Detach();
    return kSuccess;
}

std::int32_t CAppManager::HasApp(const AppRecordEx* record) {
    if (record == nullptr) return 0;
    const LockGuard guard(m_lock);
    const AppList& list = (record->qwFlags & AppFlags::kStorePackage) != 0 ? m_packages : m_apps;
    return std::ranges::any_of(list, [record](const RefPtr<IApp>& app) { return app->IsSame(*record); }) ? 1 : 0;
}

std::int32_t CAppManager::HasAppOrSubApp(const AppRecordEx* record) {
    if (record == nullptr) return 0;
    const LockGuard guard(m_lock);
    return std::ranges::any_of(m_apps, [record](const RefPtr<IApp>& app) { return app->IsSameOrHolds(*record); }) ? 1
                                                                                                                  : 0;
}

std::uint8_t CAppManager::CheckRuntime(void* argument, IHearthRuntime* runtime, std::uint32_t* out) {
    std::uint32_t ignored = 0;
    if (out == nullptr) out = &ignored;
    *out = 0;
    std::uint8_t result = 1;
    if (argument == nullptr || runtime == nullptr) {
        Ignore(Fail(SmallCode::BadArgument), u"without a question nothing speaks against the application");
        return result;
    }
    const LockGuard guard(m_lock);
    if (m_apps.empty()) return runtime->CheckApp(argument, nullptr, out);
    const auto record = std::make_unique<RuntimeRecord>();
    for (const RefPtr<IApp>& app : m_apps) {
        if (!runtime->ClassifyApp(app.Get(), record.get())) continue;
        result = runtime->CheckApp(argument, record.get(), out);
        if (result == 0) break;
    }
    return result;
}

IHearthRuntime** CAppManager::GetRuntime(IHearthRuntime** out) {
    if (out != nullptr) *out = RefPtr<IHearthRuntime>(m_runtime).Detach();
    return out;
}

}  // namespace roundup
