#include "appcenter/sqlserverstruct/sqlserverlocation.h"

namespace roundup {

void CorrectSqlServerLocation(IApp& /*app*/) {}

}  // namespace roundup
