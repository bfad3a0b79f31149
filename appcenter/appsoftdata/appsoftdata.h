// Where applications that keep the data of their users outside of their own folder say that it is.
#pragma once

#include "utility/result.h"

namespace roundup {

class CApp;
class CAppRuleSet;

// Adds the folders, files and keys of the user's data to the rules of one of the known applications; success, and
// nothing added, for every other. Small code 1 for a null argument. Calls of several threads run one after another.
ResultCode AddSoftDataRules(const CApp* app, CAppRuleSet* ruleSet);

}  // namespace roundup
