// The closed libraries that a host of the live machine may ship.
#pragma once

#include <memory>
#include <string>

#include "platform/closedlibraries.h"

namespace roundup {

// Each library is looked for in folder by its full path when it is first needed, and stays loaded for the process: its
// code may stand behind objects that outlive the machine. Stand-ins take the place of an absent one and work on the
// files of the current machine. An empty folder is that of the host's executable.
std::unique_ptr<IClosedLibraries> MakeClosedLibrariesOf(std::u16string folder);

}  // namespace roundup
