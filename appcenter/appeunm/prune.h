// Drops from the catalogue what a host could neither show nor name.
#pragma once

#include "appcenter/appeunm/applist.h"

namespace roundup {

// Releases every application without a name or without a key string, with all that belongs to it; of the others, every
// direct sub-application without one of the two.
void PruneApplications(AppList& apps);

}  // namespace roundup
