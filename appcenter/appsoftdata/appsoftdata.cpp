#include "appcenter/appsoftdata/appsoftdata.h"

namespace roundup {

ResultCode AddSoftDataRules(const CApp* /*app*/, CAppRuleSet* /*ruleSet*/) { return kSuccess; }

}  // namespace roundup
