// Completes the applications of a load side by side.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"

namespace roundup {

// Works through the list on twice the processors plus four threads, in order of the list, and returns when all of them
// have ended. Each application is worked on by one thread. When IsContinue turns false, those that are left stay as
// they are.
void RunAnalysisPool(const AppList& apps, const IContinue& goOn);

}  // namespace roundup
