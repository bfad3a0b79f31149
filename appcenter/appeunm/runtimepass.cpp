// Runtime libraries that an application installed for itself, and the entry that the user sees of the same runtime.
#include <array>
#include <map>
#include <memory>
#include <utility>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/prefixindex.h"
#include "platform/closedlibraries.h"

namespace roundup {
namespace {

// Years whose runtimes of one year stand side by side in several versions, so the version decides.
constexpr bool IsMatchedByVersion(std::uint32_t year) { return year == 2005 || year == 2008; }
// Later ones replace each other within their year.
constexpr bool IsMatchedByYear(std::uint32_t year) { return year >= 2009 && year <= 2019; }

std::size_t KindOf(const RuntimeRecord& record) { return (record.kind & RuntimeRecord::kKindBit) != 0 ? 1 : 0; }

// The runtimes of the main list, each asked about once: by version and by year, apart for the two kinds.
class RuntimeIndex {
  public:
    void Add(const CApp& app, const RuntimeRecord& record, std::size_t position) {
        m_byVersion[KindOf(record)].Add(app.pwszVersion, position);
        m_byYear[KindOf(record)].try_emplace(record.year, position);
    }
    std::size_t Find(const CApp& app, const RuntimeRecord& record) {
        if (IsMatchedByVersion(record.year)) return m_byVersion[KindOf(record)].FirstOverlap(app.pwszVersion);
        if (!IsMatchedByYear(record.year)) return kNoPosition;
        const auto& years = m_byYear[KindOf(record)];
        const auto found = years.find(record.year);
        return found != years.end() ? found->second : kNoPosition;
    }

  private:
    std::array<PrefixIndex, 2> m_byVersion;
    std::array<std::map<std::uint32_t, std::size_t>, 2> m_byYear;
};

}  // namespace

// Row 14.
ResultCode AttachRuntimes(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    IHearthRuntime* opened = nullptr;
    manager.GetRuntime(&opened);
    const auto runtime = RefPtr<IHearthRuntime>::Adopt(opened);
    if (!runtime) return Fail(SmallCode::GeneralFailure);
    if (hide.empty()) return kSuccess;
    const auto record = std::make_unique<RuntimeRecord>();
    RuntimeIndex runtimes;
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (manager.IsContinue() == 0) return kSuccess;
        if (main[i]->pwszVersion.IsEmpty() || !runtime->ClassifyApp(main[i].Get(), record.get())) continue;
        runtimes.Add(*main[i], *record, i);
    }
    for (RefPtr<CApp>& app : hide) {
        if (manager.IsContinue() == 0) return kSuccess;
        if (app->pwszVersion.IsEmpty() || !runtime->ClassifyApp(app.Get(), record.get())) continue;
        const std::size_t found = runtimes.Find(*app, *record);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(app), LinkReason::Runtime);
    }
    return kSuccess;
}

}  // namespace roundup
