#include "externfuncinc/externfunc.h"

#include <array>
#include <mutex>
#include <utility>

#include "appcenter/appeunm/appmanager.h"
#include "platform/threading.h"
#include "utility/boundary.h"

namespace roundup {

// The facades that have ended last. They are closed, and hold nothing but their own few bytes.
class CRoundup::EndedFacades {
  public:
    ~EndedFacades() {
        for (CRoundup* const facade : m_facades) Free(facade);
    }
    void Add(CRoundup* facade) noexcept {
        const std::lock_guard guard(m_lock);
        std::swap(facade, m_facades[m_next]);
        m_next = (m_next + 1) % m_facades.size();
        Free(facade);
    }

  private:
    static void Free(CRoundup* facade) noexcept {
        if (facade == nullptr) return;
        facade->~CRoundup();
        ::operator delete(facade);
    }

    Mutex m_lock;
    std::array<CRoundup*, 16> m_facades{};  // guarded by m_lock
    std::size_t m_next = 0;                 // guarded by m_lock; the oldest, or a free place
};

void CRoundup::operator delete(CRoundup* facade, std::destroying_delete_t) noexcept {
    static EndedFacades ended;
    facade->DropAll();
    facade->m_ended = true;
    ended.Add(facade);
}

CRoundup::CRoundup(RefPtr<IAppManager> manager) noexcept {
    const auto build = [&] {
        m_bridge = std::make_shared<CExternFuncCall>(std::move(manager));
        m_launcher = std::make_unique<CUnInstallManager>(this);
        return true;
    };
    AtBoundary(build, [] { return false; });
}

CRoundup::~CRoundup() { DropAll(); }

std::int64_t CRoundup::Init() {
    m_ready = m_bridge != nullptr && m_launcher != nullptr;
    return 0;
}

std::int64_t CRoundup::Uninit() {
    DropAll();
    return 0;
}

void CRoundup::DropAll() {
    m_ready = false;
    m_bridge.reset();
    ReplaceObserver(nullptr);
    m_launcher.reset();
    DropRecords();
}

void CRoundup::DropRecords() noexcept {
    m_recordCount = 0;
    m_records.reset();
}

void CRoundup::SetObserver(IRoundupObserver* observer) {
    if (m_ended) return;  // nobody would ever release it
    // An observer that is set anew, and that nobody else holds, must not die in between.
    auto next = observer == m_observer.Get() ? RefPtr<IRoundupObserver>::Share(observer) : nullptr;
    ReplaceObserver(nullptr);
    ReplaceObserver(next ? std::move(next) : RefPtr<IRoundupObserver>::Share(observer));
}

// The former observer is released outside of the lock: what it does then is its own business.
void CRoundup::ReplaceObserver(RefPtr<IRoundupObserver> next) {
    const LockGuard guard(m_observerLock);
    std::swap(m_observer, next);
}

IRoundupObserver* CRoundup::Observer() {
    const LockGuard guard(m_observerLock);
    return m_observer.Get();
}

std::uint8_t CRoundup::ForwardProgress(std::uint32_t percent, void* facade) {
    const auto& observer = static_cast<CRoundup*>(facade)->m_observer;
    return observer ? observer->OnProgress(percent) : 1;
}

void CRoundup::Tell(std::uint32_t percent) {
    if (m_observer) m_observer->OnProgress(percent);
}

std::int64_t CRoundup::LoadApps(std::uint8_t /*unused*/) {
    if (!IsOperational()) return 0;
    // A load inside a load would empty the lists that the sources are filling.
    if (std::exchange(m_loading, true)) return -1;
    const auto self = RefPtr<CRoundup>::Share(this);  // OnProgress may give up the host's reference
    const std::int64_t result = AtBoundary([this] { return LoadCatalogue(); }, [] { return std::int64_t{-1}; });
    m_loading = false;
    return result;
}

std::int64_t CRoundup::LoadCatalogue() {
    DropRecords();
    const auto bridge = m_bridge;  // OnProgress may close the facade
    if (!bridge->Load(&ForwardProgress, this) || m_bridge == nullptr) {
        Tell(100);
        return -1;
    }
    Tell(98);
    if (m_bridge != nullptr) FillRecords();
    Tell(100);
    return 0;
}

// Without memory for the records the catalogue counts as empty.
void CRoundup::FillRecords() {
    const std::int32_t count = m_bridge->GetAppCount();
    const auto make = [count]() -> std::shared_ptr<CAppInfo[]> {
        return std::make_unique<CAppInfo[]>(static_cast<std::size_t>(count));
    };
    m_records = AtBoundary(make, [] { return std::shared_ptr<CAppInfo[]>(); });
    m_recordCount = m_records != nullptr ? count : 0;
    for (std::int32_t i = 0; i < m_recordCount; ++i) {
        CAppInfo& record = m_records[i];
        if (!m_bridge->FillRecord(record.GetAppInfo(), i)) continue;
        record.Bind(m_bridge->Share(i), i);
        record.GetAppInfo()->dwReserved = 0;
    }
}

std::int64_t CRoundup::EnumApps() {
    const auto self = RefPtr<CRoundup>::Share(this);  // OnAppInfo may give up the host's reference
    AtBoundary([this] { ReplayRecords(); }, [] {});
    return 0;
}

void CRoundup::ReplayRecords() {
    for (std::int32_t i = 0; IsOperational() && i < m_recordCount; ++i) {
        if (m_bridge->IsIndexPresent(i)) m_observer->OnAppInfo(&m_records[i]);
    }
}

std::int64_t CRoundup::UnInstallApp(IRmxApp* app) {
    const auto uninstall = [this, app]() -> std::int64_t {
        CAppInfo* const record = IsOperational() ? RecordOf(app) : nullptr;
        return record != nullptr && StartUninstall(*record) ? 0 : -1;
    };
    return AtBoundary(uninstall, [] { return std::int64_t{-1}; });
}

bool CRoundup::StartUninstall(CAppInfo& record) {
    OwnedString command;
    std::uint8_t hidden = 0;
    if (!m_bridge->GetUninstallCommand(record.Index(), command, hidden)) return false;
    // The host may load again before the uninstall has ended, and gets this record all the same.
    std::shared_ptr<IRmxApp> pinned(m_records, &record);
    if (command.IsEmpty()) {
        m_observer->OnUnInstallDone(pinned.get(), 0);
        return true;
    }
    return m_launcher->AddUnInstallProc(command, hidden, std::move(pinned));
}

// The record that app is, null for anything but one of the current records: the pointer comes from the host, which may
// have kept it too long. Addresses are compared as numbers, since what it points to may be gone, or be no CAppInfo.
CAppInfo* CRoundup::RecordOf(IRmxApp* app) const noexcept {
    if (app == nullptr || m_records == nullptr) return nullptr;
    const auto first = reinterpret_cast<std::uintptr_t>(static_cast<IRmxApp*>(m_records.get()));
    const auto offset = reinterpret_cast<std::uintptr_t>(app) - first;
    const std::uintptr_t index = offset / sizeof(CAppInfo);
    if (offset % sizeof(CAppInfo) != 0 || index >= static_cast<std::uintptr_t>(m_recordCount)) return nullptr;
    return &m_records[static_cast<std::ptrdiff_t>(index)];
}

IRoundupProc* CreateRoundup() noexcept {
    // Without a manager the facade works as far as it goes, and every load fails.
    auto manager =
        AtBoundary([] { return RefPtr<IAppManager>::Adopt(new CAppManager); }, [] { return RefPtr<IAppManager>(); });
    return new (std::nothrow) CRoundup(std::move(manager));
}

}  // namespace roundup
