#include <array>
#include <iterator>
#include <memory>
#include <source_location>
#include <span>
#include <vector>

#include "appcenter/appeunm/analysispool.h"
#include "appcenter/appeunm/appcache.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/loadprogress.h"
#include "appcenter/appeunm/productsource.h"
#include "appcenter/appeunm/prune.h"
#include "appcenter/appeunm/reconcile.h"
#include "appcenter/appeunm/uninstallsource.h"
#include "appcenter/enumappx/loadappx.h"
#include "appcenter/sqlserverstruct/sqlserverlocation.h"
#include "utility/log.h"
#include "utility/sysinfo.h"

// A load runs every source on a thread of its own and then turns what they found into the catalogue on the loading
// thread. Each source fills a list that it has to itself; the lists join in the order of the table below once all
// sources have ended. So the result does not depend on which thread was faster, and no source waits for another.

namespace roundup {
namespace {

enum class SourceKind : std::uint8_t { Packages, Products, Uninstall };

struct SourceStep {
    SourceKind kind;
    std::uint32_t percent;  // told once the source has started; 0 tells nothing
    KeyHandle root = 0;     // the Uninstall sources'
    bool view64 = false;
};

constexpr SourceStep kSteps64[] = {
    {SourceKind::Packages, 10},
    {SourceKind::Products, 20},
    {SourceKind::Uninstall, 40, kHkeyLocalMachine, false},
    {SourceKind::Uninstall, 50, kHkeyCurrentUser, false},
    {SourceKind::Uninstall, 60, kHkeyLocalMachine, true},
    {SourceKind::Uninstall, 0, kHkeyCurrentUser, true},
};
constexpr SourceStep kSteps32[] = {
    {SourceKind::Packages, 10},
    {SourceKind::Products, 30},
    {SourceKind::Uninstall, 50, kHkeyLocalMachine, false},
    {SourceKind::Uninstall, 0, kHkeyCurrentUser, false},
};
constexpr std::size_t kMostSteps = std::size(kSteps64);

// The sources of a run and the lists of the Uninstall ones. All live until the last has ended; the newest is waited
// for first.
class SourceSet {
  public:
    explicit SourceSet(const CAppManager& manager) : m_manager(manager) {}
    SourceSet(const SourceSet&) = delete;
    SourceSet& operator=(const SourceSet&) = delete;
    ~SourceSet() { Join(); }

    void Start(const SourceStep& step, AppList& packages, AppList& installs) {
        auto& source = m_sources.at(m_count);
        AppList& list = m_lists.at(m_count);
        switch (step.kind) {
            case SourceKind::Packages:
                source = std::make_unique<CLoadAppx>(m_manager, packages);
                break;
            case SourceKind::Products:
                source = std::make_unique<ProductEnumerator>(m_manager, installs);
                break;
            case SourceKind::Uninstall:
                source = std::make_unique<UninstallEnumerator>(m_manager, list, step.root, step.view64);
                break;
        }
        ++m_count;
    }

    void Join() {
        while (m_count > 0) m_sources.at(--m_count).reset();
    }

    // After Join.
    void MoveTo(AppList& uninstalls) {
        for (AppList& list : m_lists) {
            uninstalls.insert(uninstalls.end(), std::make_move_iterator(list.begin()),
                              std::make_move_iterator(list.end()));
        }
    }

  private:
    const CAppManager& m_manager;
    std::array<AppList, kMostSteps> m_lists;
    std::array<std::unique_ptr<CKvdRunable>, kMostSteps> m_sources;
    std::size_t m_count = 0;
};

std::uint32_t CurrentLine(std::source_location where = std::source_location::current()) noexcept {
    return where.line();
}

std::int32_t Count(const AppList& list) noexcept { return static_cast<std::int32_t>(list.size()); }

}  // namespace

ResultCode CAppManager::LoadAppEx(ProgressCallback callback, void* context, bool useCache) {
    const LockGuard guard(m_lock);
    TraceLine(u"[APP] LoadAppEx enter");
    if (callback == nullptr) return kNoCallback;
    GoOn();
    m_apps.clear();
    m_packages.clear();
    const LoadProgress progress(callback, context);
    return useCache ? LoadCached(progress) : LoadFresh(progress);
}

// What the cache holds is complete as it stands; a cache that cannot be read leaves the catalogue with what was read.
ResultCode CAppManager::LoadCached(const LoadProgress& progress) {
    if (Succeeded(LoadAppFromCache(*this))) return kSuccess;
    if (auto rc = progress.Report(95); Failed(rc)) return rc;
    TraceLine(u"[APP] LoadAppEx leave");
    return kSuccess;
}

ResultCode CAppManager::LoadFresh(const LoadProgress& progress) {
    AppList installs;
    AppList uninstalls;
    TraceLine(u"[APP] LoadAppEx %d", CurrentLine());
    if (auto rc = RunSources(progress, installs, uninstalls); Failed(rc)) return rc;
    if (auto rc = progress.Report(70); Failed(rc)) return rc;
    TraceLine(u"[APP] LoadAppEx install = %d uninstall = %d", Count(installs), Count(uninstalls));

    Reconcile(*this, installs, uninstalls);
    if (auto rc = progress.Report(80); Failed(rc)) return rc;
    PruneApplications(m_apps);
    for (const RefPtr<IApp>& app : m_apps) CorrectSqlServerLocation(*app);
    if (auto rc = progress.Report(90); Failed(rc)) return rc;
    TraceLine(u"[APP] LoadAppEx app = %d, appx = %d", Count(m_apps), Count(m_packages));

    RunAnalysisPool(m_apps, *this);
    if (auto rc = progress.Report(95); Failed(rc)) return rc;
    TraceLine(u"[APP] LoadAppEx leave");
    return kSuccess;
}

ResultCode CAppManager::RunSources(const LoadProgress& progress, AppList& installs, AppList& uninstalls) {
    const std::span<const SourceStep> steps = Is64BitOS() ? std::span<const SourceStep>(kSteps64) : kSteps32;
    SourceSet sources(*this);
    for (const SourceStep& step : steps) {
        sources.Start(step, m_packages, installs);
        if (step.percent == 0) continue;
        if (auto rc = progress.Report(step.percent); Failed(rc)) return rc;
    }
    sources.Join();
    sources.MoveTo(uninstalls);
    return kSuccess;
}

}  // namespace roundup
