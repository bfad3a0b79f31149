#include "appcenter/sqlserverstruct/sqlservergather.h"

#include "appcenter/app/app.h"

namespace roundup {

ResultCode AddSqlServerRules(const CApp& app, CAppRuleSet& ruleSet) {
    return CSqlServerGather::AddSqlServerRules(app, &ruleSet);
}

}  // namespace roundup
