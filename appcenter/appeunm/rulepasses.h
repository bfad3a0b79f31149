// Reconciliation: what the rule files and the compatibility lists beside the host say of parts.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/reconcilelists.h"
#include "utility/result.h"

namespace roundup {

class CAppManager;

// A pass, see hidepasses.h: what an application's rules hide hangs below it.
ResultCode AttachByRules(CAppManager& manager, CAppList& main, CAppList& hide);

// What an application's rules name as its parts leaves the list and hangs below it. The applications with such rules
// come first on the list afterwards, and are nobody's parts.
void AttachRuleSubApps(const IContinue& goOn, CAppList& main);

// What the compatibility list of an application names leaves the list and hangs below it, in the order of that list
// and then of the list of applications; the sizes add up.
void AttachCompatible(const IContinue& goOn, CAppList& main);

}  // namespace roundup
