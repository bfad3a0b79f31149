#include "appcenter/appeunm/reconcile.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>

#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/attachclaims.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/locationpasses.h"
#include "appcenter/appeunm/lookahead.h"
#include "appcenter/appeunm/mergelists.h"
#include "appcenter/appeunm/rulepasses.h"
#include "appcenter/appeunm/suitefolder.h"
#include "appcenter/appeunm/suitegroup.h"
#include "platform/machine.h"
#include "utility/boundary.h"

// The sources deliver two overlapping pictures: the Uninstall entries, which are the spine of the catalogue, and the
// records of Windows Installer, which live on only by being merged into an entry or hung below one. Every step works
// on what the one before has left, so their order is part of the result. docs/reconciliation.md has them as a table,
// whose row numbers stand at the code of each step.
//
// Wherever a rule says "the first that fits", the order of the list decides and an index finds it.

namespace roundup {
namespace {

// The applications of a source's list. These sources make no others.
CAppList TakeAll(AppList& list) {
    CAppList taken;
    taken.reserve(list.size());
    for (RefPtr<IApp>& app : list) taken.push_back(RefPtr<CApp>::Adopt(static_cast<CApp*>(app.Detach())));
    list.clear();
    return taken;
}

CAppList TakeInstalls(AppList& list) {
    CAppList taken = TakeAll(list);
    for (const RefPtr<CApp>& record : taken) record->dwOrigins |= AppOrigin::kInstaller;
    return taken;
}

// Rows 4 and 18.
void DropRemaining(const IContinue& goOn, const char16_t* what, CAppList& list) {
    for (const RefPtr<CApp>& app : list) {
        if (goOn.IsContinue() == 0) break;
        LogRemaining(what, *app);
    }
    list.clear();
}

using HidePass = std::function<ResultCode(CAppManager& manager, CAppList& main, CAppList& hide)>;

void RunHidePasses(CAppManager& manager, CAppList& main, CAppList& hide, RuleBook& rules) {
    const auto attachByRules = [&rules](CAppManager& owner, CAppList& apps, CAppList& hidden) {
        return AttachByRules(owner, apps, hidden, rules);
    };
    const HidePass passes[] = {
        AttachSameFolder, AttachByDependency, GroupSuiteComponents, GroupSuiteSiblings,
        AttachBySource,   AttachRuntimes,     attachByRules,        AttachBySharedComponent,
    };
    for (const HidePass& pass : passes) {
        if (manager.IsContinue() == 0) return;
        const ResultCode rc =
            AtBoundary([&] { return pass(manager, main, hide); }, [] { return Fail(SmallCode::ObjectAllocation); });
        Ignore(rc, u"the next pass works on what this one has left");
    }
}

void CorrectSuiteFolders(const IContinue& goOn, const CAppList& main, RuleBook& rules) {
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        LookAhead<&CApp::pwszName, &CApp::pwszInstallLoc>(main, i);
        if (CorrectSuiteFolder(*main[i])) rules.Forget(*main[i]);
    }
}

}  // namespace

// A load that was stopped has no applications rather than half a forest.
void Reconcile(CAppManager& manager, AppList& installs, AppList& uninstalls) {
    // Rule files may have changed since the last load; within one they are read once.
    ProcessWide<RuleFileStore>().Renew();
    CAppList records = TakeInstalls(installs);
    CAppList main = RemoveDuplicates(manager, TakeAll(uninstalls));
    MergeInstallRecords(manager, main, records);
    AttachPatches(manager, main, records);
    DropRemaining(manager, u"remain installApp", records);

    CAppList hide;
    SortMain(manager, main, AttachClaimed(manager, main), hide);
    AttachByLocation(manager, main, hide);
    RuleBook rules;
    RunHidePasses(manager, main, hide, rules);
    CorrectSuiteFolders(manager, main, rules);
    DropRemaining(manager, u"remain hideApp", hide);

    BreakCycles(manager, main);
    AttachCompatible(manager, main);
    ShortenLocations(manager, main, rules);
    AttachRuleSubApps(manager, main, rules);

    if (manager.IsContinue() == 0) return;
    AppList& apps = manager.Applications();
    apps.insert(apps.end(), std::make_move_iterator(main.begin()), std::make_move_iterator(main.end()));
}

}  // namespace roundup
