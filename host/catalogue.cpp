#include "host/catalogue.h"

#include "externfuncinc/appinfo.h"
#include "externfuncinc/externfunc.h"

namespace roundup::host {

// Lives on the stack of the program, so its count is for show.
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
    void OnUnInstallDone(IRmxApp*, std::uint32_t) override {}

    ProgressMeter* progress = nullptr;
    std::function<bool()> interrupted;
    bool cancelled = false;
    std::vector<IRmxApp*> records;
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

std::vector<Catalogue::Listed> Catalogue::Records() {
    std::vector<Listed> listed;
    m_observer->records.clear();
    if (m_facade != nullptr) m_facade->EnumApps();
    for (IRmxApp* record : m_observer->records) {
        const auto* own = dynamic_cast<const CAppInfo*>(record);
        if (own == nullptr) continue;
        listed.push_back({record->GetAppInfo(), m_apps[static_cast<std::size_t>(own->Index())]});
    }
    return listed;
}

}  // namespace roundup::host
