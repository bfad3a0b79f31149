#include "appcenter/appeunm/locationpasses.h"

#include <algorithm>
#include <utility>

#include "appcenter/app/forest.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/lookahead.h"
#include "appcenter/appeunm/rulepasses.h"
#include "utility/ownedstring.h"

namespace roundup {
namespace {

template <class Take>
void ForEachLocation(const CApp& app, Take take) {
    AnyInForest(
        app,
        [&take](const CApp& part) {
            take(part.pwszInstallLoc);
            return false;
        },
        [](const IApp&) { return false; });
}

// The numbers of the queries are the positions of the hide list.
void AttachToOwners(const PrefixQueries& queries, LinkReason reason, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    for (std::size_t i = 0; i < hide.size(); ++i) {
        const std::size_t found = queries.OwnerOf(i);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(hide[i]), reason);
    }
}

// True when it has changed.
bool ShortenLocation(CApp& app) {
    const std::u16string_view own = app.pwszInstallLoc;
    std::u16string_view shortest = own;
    for (const RefPtr<IApp>& sub : app.SubApps) {
        const auto* const part = dynamic_cast<const CApp*>(sub.Get());
        if (part == nullptr || part->pwszInstallLoc.IsEmpty()) continue;
        const std::u16string_view folder = part->pwszInstallLoc;
        if (folder.size() >= shortest.size() || own[folder.size()] != u'\\') continue;
        if (ContainsNoCase(own, folder)) shortest = folder;
    }
    return shortest.size() < own.size() && AssignString(app.pwszInstallLoc, shortest);
}

}  // namespace

void LocationOwners::Search(const IContinue& goOn, const CAppList& main) {
    for (std::size_t i = 0; i < main.size() && m_paths.HasOpen() && goOn.IsContinue() != 0; ++i) {
        LookAhead<&CApp::pwszInstallLoc, &CApp::SubApps>(main, i);
        ForEachLocation(*main[i], [&](const OwnedString& location) { m_paths.ClaimExtensions(location, i); });
    }
}

void LocationOwners::Add(const CApp& app, std::size_t position) {
    ForEachLocation(app, [&](const OwnedString& location) { m_added.Add(location, position); });
}

std::size_t LocationOwners::First(std::size_t number, std::u16string_view path) {
    return std::min(m_paths.OwnerOf(number), m_added.FirstPrefixOf(path));
}

// Row 8. An application that is attached brings its own location, and those of its parts, to what the next are
// compared with.
void AttachByLocation(const IContinue& goOn, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    LocationOwners owners;
    for (const RefPtr<CApp>& app : hide) owners.AddPath(app->pwszInstallLoc);
    owners.Search(goOn, main);
    for (std::size_t i = 0; i < hide.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        RefPtr<CApp>& app = hide[i];
        if (app->pwszInstallLoc.IsEmpty()) continue;
        const std::size_t found = owners.First(i, app->pwszInstallLoc);
        if (found == kNoPosition) continue;
        owners.Add(*app, found);
        LinkSubApp(*main[found], std::move(app), LinkReason::Location);
    }
}

// Row 9.
ResultCode AttachSameFolder(CAppManager& manager, CAppList& main, CAppList& hide) {
    PrefixQueries folders;
    for (const RefPtr<CApp>& app : hide) folders.Add(app->pwszInstallLoc);
    for (std::size_t i = 0; i < main.size() && folders.HasOpen(); ++i) {
        if (manager.IsContinue() == 0) return kSuccess;
        LookAhead<&CApp::pwszInstallLoc>(main, i);
        folders.ClaimSameFolder(main[i]->pwszInstallLoc, i);
    }
    AttachToOwners(folders, LinkReason::Location, main, hide);
    return kSuccess;
}

// Row 13. The sources of its parts stand for an application that has none of its own. What is attached here goes on
// from a source that has been compared already, so nothing is added.
ResultCode AttachBySource(CAppManager& manager, CAppList& main, CAppList& hide) {
    PrefixQueries sources;
    for (const RefPtr<CApp>& app : hide) sources.Add(app->pwszInstallSource);
    for (std::size_t i = 0; i < main.size() && sources.HasOpen(); ++i) {
        if (manager.IsContinue() == 0) return kSuccess;
        LookAhead<&CApp::pwszInstallSource, &CApp::SubApps>(main, i);
        sources.ClaimExtensions(main[i]->pwszInstallSource, i);
        if (!main[i]->pwszInstallSource.IsEmpty()) continue;
        for (const RefPtr<IApp>& sub : main[i]->SubApps) {
            const auto* const part = dynamic_cast<const CApp*>(sub.Get());
            if (part != nullptr) sources.ClaimExtensions(part->pwszInstallSource, i);
        }
    }
    AttachToOwners(sources, LinkReason::Source, main, hide);
    return kSuccess;
}

// Row 21.
void ShortenLocations(const IContinue& goOn, const CAppList& main, RuleBook& rules) {
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        LookAhead<&CApp::pwszInstallLoc, &CApp::SubApps>(main, i);
        if (!main[i]->pwszInstallLoc.IsEmpty() && ShortenLocation(*main[i])) rules.Forget(*main[i]);
    }
}

}  // namespace roundup
