// The object that a cache file is read into.
#pragma once

#include "appcenter/app/iapp.h"
#include "utility/kvobject.h"

namespace roundup {

enum class CachedKind { None, Application, Package };

// Makes the new object whose ReSerialize takes the record; null when memory is short.
RefPtr<IApp> NewCachedObject(CachedKind kind);

// Restored applications do not own the temporary files that their records name: another process made those, or whoever
// wrote the record wants them gone. Goes through the application and all below it. (A package never owns such files:
// a record that names one is refused.)
void DisownFiles(IApp& restored);

}  // namespace roundup
