#include "appcenter/sqlserverstruct/softdatalock.h"

namespace roundup {

CriticalSection g_SoftDataLock;

}  // namespace roundup
