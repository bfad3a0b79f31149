#include "appcenter/appeunm/prune.h"

#include "appcenter/app/app.h"

namespace roundup {
namespace {

// The application list and what hangs below it hold no store packages, which alone are no CApp.
CApp* AsCApp(const RefPtr<IApp>& app) { return app->IsAppx() == 0 ? static_cast<CApp*>(app.Get()) : nullptr; }

bool LacksNameOrKey(const RefPtr<IApp>& app) {
    const CApp* const entry = AsCApp(app);
    return entry != nullptr && (entry->pwszName.IsEmpty() || entry->pwszKeyString.IsEmpty());
}

}  // namespace

void PruneApplications(AppList& apps) {
    std::erase_if(apps, LacksNameOrKey);
    for (const RefPtr<IApp>& app : apps) {
        if (CApp* const entry = AsCApp(app)) std::erase_if(entry->SubApps, LacksNameOrKey);
    }
}

}  // namespace roundup
