// The sample machine of the project, which has an application of each kind.
#pragma once

#include <memory>

#include "platform/machine.h"
#include "utility/stringcontainers.h"

namespace roundup {

// Null when it cannot be opened.
std::unique_ptr<Machine> OpenSampleMachine();

// Loads the catalogue of the current machine with a new manager and gathers all of it, going on behind what fails or
// throws. Answers the paths of the files that were found.
CStringSet GatherWholeCatalogue();

}  // namespace roundup
