// One lock for all that looks for the data of applications outside of their folders.
#pragma once

#include "utility/locks.h"

namespace roundup {

// Held by AddSoftDataRules, under which the rules of the database server are added, and by CorrectSqlServerLocation.
// Recursive on one thread; lives as long as the module.
extern CriticalSection g_SoftDataLock;

}  // namespace roundup
