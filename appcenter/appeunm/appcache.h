// The catalogue from the cache files beside the host, instead of from the machine.
#pragma once

#include "utility/result.h"

namespace roundup {

class CAppManager;

// Fills the manager's two lists from the cache folder, under the manager's lock. After a failure the lists hold what
// had been read until then. This build reads no cache: NotAvailable, and the lists stay empty.
ResultCode LoadAppFromCache(CAppManager& manager);

}  // namespace roundup
