// The bridge: through it the facade talks to the catalogue, and applications become records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "appcenter/app/iapp.h"
#include "appcenter/appeunm/iappmanager.h"
#include "externfuncinc/roundup.h"
#include "utility/kvobject.h"
#include "utility/ownedstring.h"

namespace roundup {

// Holds the manager and a snapshot of the applications that the last load found, which outlive the manager's lists.
// Used by one thread at a time, the host's. A bad index makes every operation answer false, null or 0.
class CExternFuncCall {
  public:
    // With no manager, for want of memory, every load fails.
    explicit CExternFuncCall(RefPtr<IAppManager> manager);
    ~CExternFuncCall();
    CExternFuncCall(const CExternFuncCall&) = delete;
    CExternFuncCall& operator=(const CExternFuncCall&) = delete;

    // Loads the catalogue and takes a new snapshot; the former one goes, whatever comes of the load. False when there
    // is no manager or callback, and when the load failed or was cancelled.
    bool Load(ProgressCallback callback, void* context);
    // 0 before a load.
    std::int32_t GetAppCount() const noexcept { return static_cast<std::int32_t>(m_apps.size()); }
    // The application of that place, which stays the bridge's; null for one that could not be had.
    const IApp* At(std::int32_t index) const noexcept;
    // The same with a reference of the caller's own.
    RefPtr<IApp> Share(std::int32_t index) const noexcept;
    // Fills a new record; one whose application could not be had stays empty.
    bool FillRecord(_RoundupAppInfo_* record, std::int32_t index) const;
    // The icon's bytes belong to the application and stay until the next load.
    const std::byte* GetIconData(std::int32_t index) const;
    std::uint32_t GetIconSize(std::int32_t index) const;

    // Asks the registry whether the application is still installed.
    bool IsAppPresent(const IApp& app) const;
    bool IsIndexPresent(std::int32_t index) const;
    // The command line that uninstalls the application, and 1 in hidden when it is to run without a window. True with
    // an empty command when the entry's is; false when the application has gone or its entry has none.
    bool GetUninstallCommand(std::int32_t index, OwnedString& command, std::uint8_t& hidden) const;
    // The same of any application, for those that have no place of their own.
    bool GetUninstallCommand(const IApp& app, OwnedString& command, std::uint8_t& hidden) const;

  private:
    bool IsPackagePresent(const AppRecordEx& record) const;
    bool IsProductPresent(const AppRecordEx& record) const;

    RefPtr<IAppManager> m_manager;
    std::vector<RefPtr<IApp>> m_apps;  // an element that could not be had is null
    const bool m_is64Bit;
};

}  // namespace roundup
