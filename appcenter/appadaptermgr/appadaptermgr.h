// The adapters of the machine: named packages of knowledge about families of applications.
#pragma once

#include "utility/result.h"

namespace roundup {

class CApp;
class CAppRuleSet;
class IApp;

// Makes an adapter for each key of section "AppName" of "%s\Config\AppsIniEx.ini" (1 to 0x100000 bytes, the first 100
// keys) beside the host, once; they live as long as the process. A file that is missing or names none is no failure,
// and the next load looks again. GeneralFailure when memory is short; the adapters made so far stay. Any thread, any
// number of times.
ResultCode LoadAdapters();

// Lets every adapter look at the application, in the order of their names; what one of them answers is its own affair.
// BadArgument for null. Any thread after LoadAdapters, each with an application and a rule set of its own. The
// application's location may be corrected by it.
ResultCode ApplyAdapters(IApp* app, CAppRuleSet* ruleSet);

}  // namespace roundup
