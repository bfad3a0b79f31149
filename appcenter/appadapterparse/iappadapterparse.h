// What an adapter is to those that apply it.
#pragma once

#include "utility/kvobject.h"
#include "utility/result.h"

namespace roundup {

class CAppRuleSet;
class IApp;

// Counted. Every thread may call, each on an application and a rule set of its own.
class IAppAdapterParse : public IKvObject {
  public:
    // Adds to the rule set what the adapter knows of the application: nothing, and success, for a store package and
    // for an application that is none of the adapter's. May correct the application's location. BadArgument for null.
    virtual ResultCode ApplyTo(IApp* app, CAppRuleSet* ruleSet) = 0;
    // True when the adapter's name occurs in the application's name, location or key, ignoring case.
    virtual bool IsMatch(IApp* app) const = 0;
};

}  // namespace roundup
