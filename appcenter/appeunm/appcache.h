// The catalogue from the cache files beside the host, instead of from the machine.
#pragma once

#include "utility/result.h"

namespace roundup {

class CAppManager;

// Fills the manager's two lists from the cache folder, in the order of the folder, under the manager's lock: each file
// whose name ends in "_E" or "_EX", ignoring case, is the stored record of one application or of one store package.
// Nothing is reconciled or analysed. A file that is empty or whose record cannot be read is passed over; one that
// cannot be opened ends the read with GeneralFailure, as a cache folder that is not there does, and the want of memory
// with BufferAllocation. After a failure the lists hold what had been read until then. Ends early, with success, when
// the manager's go-on flag is cleared.
ResultCode LoadAppFromCache(CAppManager& manager);

}  // namespace roundup
