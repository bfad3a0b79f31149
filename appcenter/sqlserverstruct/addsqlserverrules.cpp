#include "appcenter/sqlserverstruct/sqlservergather.h"

namespace roundup {

ResultCode CSqlServerGather::AddSqlServerRules(const IApp& /*app*/, CAppRuleSet* /*ruleSet*/) { return kSuccess; }

}  // namespace roundup
