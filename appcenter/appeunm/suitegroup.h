// Reconciliation: the parts of Office-family suites, whose entries do not name each other.
//
// Such a suite is installed either as one streamed package ("ClickToRun"), or by a setup program, or product by
// product from packages. Its shared components and the parts of its members belong to every member alike; since an
// application hangs below one other only, each member gets copies.
#pragma once

#include "appcenter/appeunm/reconcilelists.h"
#include "utility/kvobject.h"
#include "utility/result.h"

namespace roundup {

class CAppManager;

// Passes, see hidepasses.h.
// The shared components of 2013 and later go to every suite that no setup program manages.
ResultCode GroupSuiteComponents(CAppManager& manager, CAppList& main, CAppList& hide);
// The members of one year, none of them streamed, share their parts.
ResultCode GroupSuiteSiblings(CAppManager& manager, CAppList& main, CAppList& hide);

// A deep copy by way of the stored form, which keeps what that form keeps, and the package. Null when the application
// cannot be stored, with a log line.
RefPtr<CApp> CloneApp(const CApp& source);

}  // namespace roundup
