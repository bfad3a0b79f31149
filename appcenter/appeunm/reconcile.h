// Turns what the sources found into the forest of applications.
#pragma once

#include "appcenter/appeunm/applist.h"

namespace roundup {

class CAppManager;

// Consumes both lists and leaves the top-level applications in the manager's application list. Runs on the thread of
// the load; ends early when the manager's IsContinue turns false.
void Reconcile(CAppManager& manager, AppList& installs, AppList& uninstalls);

}  // namespace roundup
