#include "host/catalogue.h"

#include <condition_variable>
#include <mutex>

#include "externfuncinc/appinfo.h"
#include "externfuncinc/externfunc.h"

namespace roundup::host {

// Where the end of an uninstall is told by its thread and waited for by the program's.
struct UninstallEnd {
    std::mutex lock;
    std::condition_variable told;
    std::optional<std::uint32_t> code;  // guarded by lock
};

// Lives as long as the catalogue, so its count is for show.
class Catalogue::Observer final : public IRoundupObserver {
  public:
    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }
    void OnAppInfo(IRmxApp* app) override { records.push_back(app); }
    std::uint8_t OnProgress(std::uint32_t percent) override {
        if (progress != nullptr) progress->Show(percent);
        if (interrupted && interrupted()) cancelled = true;
        return cancelled ? 0 : 1;
    }
    void OnUnInstallDone(IRmxApp*, std::uint32_t exitCode) override {
        // Once it is told, the program may end, and take this object with it.
        const std::shared_ptr<UninstallEnd> kept = end;
        const std::lock_guard guard(kept->lock);
        kept->code = exitCode;
        kept->told.notify_all();
    }

    ProgressMeter* progress = nullptr;
    std::function<bool()> interrupted;
    bool cancelled = false;
    std::vector<IRmxApp*> records;
    const std::shared_ptr<UninstallEnd> end = std::make_shared<UninstallEnd>();
};

namespace {

// The program links the module's code, so behind the exported face is the facade that it knows.
const CExternFuncCall* BridgeOf(IRoundupProc* facade) {
    const auto* known = dynamic_cast<const CRoundup*>(facade);
    return known != nullptr ? known->Bridge() : nullptr;
}

}  // namespace

Catalogue::Catalogue() : m_observer(std::make_unique<Observer>()), m_facade(GetImp()) {
    if (m_facade == nullptr) return;
    m_facade->Init();
    m_facade->SetObserver(m_observer.get());
}

Catalogue::~Catalogue() {
    if (m_facade == nullptr) return;
    m_facade->Uninit();
    m_facade->Release();
}

LoadOutcome Catalogue::Load(ProgressMeter& progress, const std::function<bool()>& interrupted) {
    if (m_facade == nullptr) return LoadOutcome::Failed;
    m_observer->progress = &progress;
    m_observer->interrupted = interrupted;
    const bool loaded = m_facade->LoadApps(0) == 0;
    m_observer->progress = nullptr;
    if (m_observer->cancelled) return LoadOutcome::Cancelled;
    return loaded && CollectApps() ? LoadOutcome::Loaded : LoadOutcome::Failed;
}

bool Catalogue::CollectApps() {
    const CExternFuncCall* bridge = BridgeOf(m_facade);
    if (bridge == nullptr) return false;
    m_apps.clear();
    for (std::int32_t i = 0; i < bridge->GetAppCount(); ++i) m_apps.push_back(bridge->At(i));
    return true;
}

// The bridge shows the applications as constant; the objects are the manager's own, which are not.
IApp& Catalogue::Writable(const IApp& app) { return const_cast<IApp&>(app); }

std::vector<Catalogue::Listed> Catalogue::Records() {
    std::vector<Listed> listed;
    for (IRmxApp* record : EnumRecords()) {
        const auto* own = dynamic_cast<const CAppInfo*>(record);
        if (own == nullptr) continue;
        listed.push_back({record->GetAppInfo(), m_apps[static_cast<std::size_t>(own->Index())]});
    }
    return listed;
}

std::vector<IRmxApp*> Catalogue::EnumRecords() {
    m_observer->records.clear();
    if (m_facade != nullptr) m_facade->EnumApps();
    return std::move(m_observer->records);
}

std::optional<Catalogue::UninstallPlan> Catalogue::PlanUninstall(const IApp& app) const {
    const CExternFuncCall* bridge = BridgeOf(m_facade);
    OwnedString command;
    std::uint8_t hidden = 0;
    if (bridge == nullptr || !bridge->GetUninstallCommand(app, command, hidden)) return std::nullopt;
    return UninstallPlan{std::u16string(command.View()), hidden != 0};
}

bool Catalogue::StartUninstall(std::size_t index) {
    for (IRmxApp* record : EnumRecords()) {
        const auto* own = dynamic_cast<const CAppInfo*>(record);
        if (own == nullptr || static_cast<std::size_t>(own->Index()) != index) continue;
        return m_facade->UnInstallApp(record) == 0;
    }
    return false;
}

std::optional<std::uint32_t> Catalogue::WaitForUninstall(std::chrono::milliseconds time) {
    UninstallEnd& end = *m_observer->end;
    std::unique_lock guard(end.lock);
    end.told.wait_for(guard, time, [&] { return end.code.has_value(); });
    return end.code;
}

}  // namespace roundup::host
