#include "appcenter/appeunm/locationpasses.h"

#include <utility>

#include "appcenter/app/forest.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "utility/ownedstring.h"

namespace roundup {
namespace {

void ShortenLocation(CApp& app) {
    const std::u16string_view own = app.pwszInstallLoc;
    std::u16string_view shortest = own;
    for (const RefPtr<IApp>& sub : app.SubApps) {
        const auto* const part = dynamic_cast<const CApp*>(sub.Get());
        if (part == nullptr || part->pwszInstallLoc.IsEmpty()) continue;
        const std::u16string_view folder = part->pwszInstallLoc;
        if (folder.size() >= shortest.size() || own[folder.size()] != u'\\') continue;
        if (ContainsNoCase(own, folder)) shortest = folder;
    }
    if (shortest.size() < own.size()) AssignString(app.pwszInstallLoc, shortest);
}

}  // namespace

LocationPrefixes::LocationPrefixes(const IContinue& goOn, const CAppList& main) {
    for (std::size_t i = 0; i < main.size() && goOn.IsContinue() != 0; ++i) Add(*main[i], i);
}

void LocationPrefixes::Add(const CApp& app, std::size_t position) {
    AnyInForest(
        app,
        [&](const CApp& part) {
            m_index.Add(part.pwszInstallLoc, position);
            return false;
        },
        [](const IApp&) { return false; });
}

// Row 8. An application that is attached brings its own location, and those of its parts, to what the next are
// compared with.
void AttachByLocation(const IContinue& goOn, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    if (hide.empty()) return;
    LocationPrefixes locations(goOn, main);
    for (RefPtr<CApp>& app : hide) {
        if (goOn.IsContinue() == 0) return;
        if (app->pwszInstallLoc.IsEmpty()) continue;
        const std::size_t found = locations.First(app->pwszInstallLoc);
        if (found == kNoPosition) continue;
        locations.Add(*app, found);
        LinkSubApp(*main[found], std::move(app), LinkReason::Location);
    }
}

// Row 9.
ResultCode AttachSameFolder(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    if (hide.empty()) return kSuccess;
    PrefixIndex folders;
    for (std::size_t i = 0; i < main.size(); ++i) folders.Add(main[i]->pwszInstallLoc, i);
    for (RefPtr<CApp>& app : hide) {
        if (manager.IsContinue() == 0) break;
        if (app->pwszInstallLoc.IsEmpty()) continue;
        const std::size_t found = folders.FirstSameFolder(app->pwszInstallLoc);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(app), LinkReason::Location);
    }
    return kSuccess;
}

// Row 13. The sources of its parts stand for an application that has none of its own. What is attached here goes on
// from a source that is in the index already, so nothing is added.
ResultCode AttachBySource(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    if (hide.empty()) return kSuccess;
    PrefixIndex sources;
    for (std::size_t i = 0; i < main.size(); ++i) {
        sources.Add(main[i]->pwszInstallSource, i);
        if (!main[i]->pwszInstallSource.IsEmpty()) continue;
        for (const RefPtr<IApp>& sub : main[i]->SubApps) {
            if (const auto* const part = dynamic_cast<const CApp*>(sub.Get())) sources.Add(part->pwszInstallSource, i);
        }
    }
    for (RefPtr<CApp>& app : hide) {
        if (manager.IsContinue() == 0) break;
        if (app->pwszInstallSource.IsEmpty()) continue;
        const std::size_t found = sources.FirstPrefixOf(app->pwszInstallSource);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(app), LinkReason::Source);
    }
    return kSuccess;
}

// Row 21.
void ShortenLocations(const IContinue& goOn, const CAppList& main) {
    for (const RefPtr<CApp>& app : main) {
        if (goOn.IsContinue() == 0) return;
        if (!app->pwszInstallLoc.IsEmpty()) ShortenLocation(*app);
    }
}

}  // namespace roundup
