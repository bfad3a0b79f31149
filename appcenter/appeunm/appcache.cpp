#include "appcenter/appeunm/appcache.h"

namespace roundup {

ResultCode LoadAppFromCache(CAppManager& /*manager*/) { return Fail(SmallCode::NotAvailable); }

}  // namespace roundup
