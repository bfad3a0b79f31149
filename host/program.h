// The commands of the program.
#pragma once

#include "host/options.h"

namespace roundup::host {

class Catalogue;

// Loads the catalogue of the current machine and shows the progress that the options ask for. Exit status; what went
// wrong has been told.
int LoadCatalogue(const Options& options, Catalogue& catalogue);

// Does what the options ask for on the machine that is current. The program's exit status.
int RunCommand(const Options& options);

}  // namespace roundup::host
