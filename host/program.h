// The commands of the program.
#pragma once

#include "host/options.h"

namespace roundup::host {

// Does what the options ask for on the machine that is current. The program's exit status.
int RunCommand(const Options& options);

}  // namespace roundup::host
