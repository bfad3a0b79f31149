// The facade behind the module's one export.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>

#include "appcenter/appeunm/iappmanager.h"
#include "externfuncinc/appinfo.h"
#include "externfuncinc/externfunccall.h"
#include "externfuncinc/roundup.h"
#include "externfuncinc/uninstallmanager.h"
#include "utility/kvobject.h"
#include "utility/locks.h"

namespace roundup {

// States: created, armed by Init, operational with an observer, closed by Uninit. LoadApps, EnumApps and UnInstallApp
// act only when operational. The host serialises its calls; no lock guards the fields. But an observer may call back
// from inside its operations, so what stands before a call to it need not stand after.
class CRoundup final : public CKvObject<IRoundupProc> {
  public:
    // What memory is short for is missing afterwards, and Init leaves the object unarmed.
    explicit CRoundup(RefPtr<IAppManager> manager) noexcept;
    ~CRoundup() override;

    // 0 behind the end of the object, which operator delete tells of.
    std::uint32_t AddRef() override { return m_ended ? 0 : CKvObject::AddRef(); }
    std::uint32_t Release() override { return m_ended ? 0 : CKvObject::Release(); }
    std::int64_t Init() override;
    std::int64_t Uninit() override;
    void SetObserver(IRoundupObserver* observer) override;
    std::int64_t LoadApps(std::uint8_t unused) override;
    std::int64_t EnumApps() override;
    std::uint8_t SaveContendProc() override { return 0; }
    std::int64_t UnInstallApp(IRmxApp* app) override;

    // Ends the object: closes it, and keeps its bytes for a while. A host that has released it once too often, or calls
    // it after its end, meets a closed facade then, and not what else has come to lie there.
    static void operator delete(CRoundup* facade, std::destroying_delete_t) noexcept;

    // For programs that link the module's code and tell more of an application than its record does; null when closed.
    const CExternFuncCall* Bridge() const noexcept { return m_bridge.get(); }
    // For the launcher, from every thread; null when there is none. Not counted: the host keeps it while uninstalls
    // run.
    IRoundupObserver* Observer();

  private:
    class EndedFacades;

    static std::uint8_t ForwardProgress(std::uint32_t percent, void* facade);

    bool IsOperational() const noexcept { return m_ready && m_observer; }
    void DropRecords() noexcept;
    void DropAll();
    void ReplaceObserver(RefPtr<IRoundupObserver> next);
    void Tell(std::uint32_t percent);
    std::int64_t LoadCatalogue();
    void FillRecords();
    void ReplayRecords();
    bool StartUninstall(CAppInfo& record);
    CAppInfo* RecordOf(IRmxApp* app) const noexcept;

    std::shared_ptr<CExternFuncCall> m_bridge;  // shared with a load that is under way
    CriticalSection m_observerLock;
    RefPtr<IRoundupObserver> m_observer;  // changed under the lock, by the host's thread, which reads it without
    std::atomic<bool> m_ended{false};
    bool m_ready = false;
    bool m_loading = false;
    std::int32_t m_recordCount = 0;
    std::shared_ptr<CAppInfo[]> m_records;  // shared with the uninstalls that run
    std::unique_ptr<CUnInstallManager> m_launcher;
};

// A new facade over the current machine, with one reference; null when memory is short. For the module's entry and
// for programs that link its code.
IRoundupProc* CreateRoundup() noexcept;

}  // namespace roundup
