#include "appcenter/appeunm/reconcile.h"

#include <iterator>

#include "appcenter/appeunm/appmanager.h"

namespace roundup {
namespace {

void MoveAll(AppList& from, AppList& to) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
    from.clear();
}

}  // namespace

void Reconcile(CAppManager& manager, AppList& installs, AppList& uninstalls) {
    MoveAll(installs, manager.Applications());
    MoveAll(uninstalls, manager.Applications());
}

}  // namespace roundup
