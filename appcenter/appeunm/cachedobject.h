// The object that a cache file is read into.
#pragma once

#include "appcenter/app/iapp.h"
#include "utility/kvobject.h"
#include "utility/result.h"

namespace roundup {

enum class CachedKind { None, Application, Package };

// Makes the new object whose ReSerialize takes the record. BufferAllocation when memory is short; NotAvailable for a
// kind of which this build has no object, as of store packages.
ResultCode NewCachedObject(CachedKind kind, RefPtr<IApp>& object);

// Restored objects do not own the temporary files that their records name: another process made those, or whoever wrote
// the record wants them gone. Goes through the application and all below it.
void DisownFiles(IApp& restored);

}  // namespace roundup
