// The recogniser of runtime libraries.
#pragma once

#include "platform/closedlibraries.h"
#include "utility/kvobject.h"

namespace roundup {

// That of the machine's closed library; where the library is absent, a stand-in that knows the redistributable C++
// runtimes by their display names: "Microsoft Visual C++ YEAR ... Redistributable", with x64 or x86 in them. The
// architecture is the kind bit of its records. It has nothing against any application and adds no rules.
RefPtr<IHearthRuntime> OpenRuntime();

}  // namespace roundup
