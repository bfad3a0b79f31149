// The catalogue of the machine's applications.
#pragma once

#include <cstdint>
#include <string_view>

#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/iappmanager.h"
#include "utility/locks.h"

namespace roundup {

class LoadProgress;

// The lock is held for the whole of a load; the threads of a load never take it, and ask IsContinue alone.
class CAppManager final : public CKvObject<CContinue<IAppManager>> {
  public:
    CAppManager();
    ~CAppManager() override;
    CAppManager(const CAppManager&) = delete;
    CAppManager& operator=(const CAppManager&) = delete;

    std::int64_t LoadApp(std::uint8_t unused) override;
    std::uint32_t GetLoadStatus() override;
    std::uint64_t GetLoadedCount() override;
    std::uint32_t GetCount() override;
    ResultCode GetApp(IApp** app, std::uint32_t index) override;
    std::int32_t HasApp(const AppRecordEx* record) override;
    std::uint8_t CheckRuntime(void* argument, IHearthRuntime* runtime, std::uint32_t* out) override;
    std::int32_t HasAppOrSubApp(const AppRecordEx* record) override;
    ResultCode GetGatheredApp(const char16_t* key, const char16_t* name, std::uint64_t flags, IApp** app) override;
    IHearthRuntime** GetRuntime(IHearthRuntime** out) override;
    ResultCode LoadAppEx(ProgressCallback callback, void* context, bool useCache) override;
    std::uint8_t IsContinue() const noexcept override { return CContinue::IsContinue(); }
    void Stop() noexcept override { CContinue::Stop(); }

    // For the steps of a load, which run on its thread and thus under the lock.
    AppList& Applications() noexcept { return m_apps; }
    AppList& Packages() noexcept { return m_packages; }

  private:
    ResultCode LoadFresh(const LoadProgress& progress);
    ResultCode LoadCached(const LoadProgress& progress);
    ResultCode RunSources(const LoadProgress& progress, AppList& installs, AppList& uninstalls);
    RefPtr<IApp> FindApp(std::u16string_view key, std::u16string_view name);
    RefPtr<IApp> FindPackage(std::u16string_view fullName);

    CriticalSection m_lock;
    AppList m_apps;                   // guarded by m_lock; in the order that reconciliation left
    std::uint64_t m_loadedCount = 0;  // guarded by m_lock; of the retired load, nothing counts it up
    AppList m_packages;               // guarded by m_lock, but for the package source's thread while it runs
    const RefPtr<IHearthRuntime> m_runtime;
};

}  // namespace roundup
