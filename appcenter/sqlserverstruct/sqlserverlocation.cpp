#include "appcenter/sqlserverstruct/sqlserverlocation.h"

#include "appcenter/app/app.h"
#include "appcenter/sqlserverstruct/sqlservergather.h"

namespace roundup {

void CorrectSqlServerLocation(IApp& app) {
    if (app.IsAppx() == 0) CSqlServerGather::CorrectSqlServerLocation(static_cast<CApp*>(&app));
}

}  // namespace roundup
