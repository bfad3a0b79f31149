// The command `uninstall`: shows what will run, runs it, waits for it.
#pragma once

#include "host/catalogue.h"
#include "host/findapp.h"
#include "host/options.h"

namespace roundup::host {

// Uninstalls the found application, or with --dry-run tells as JSON what would run. The program's exit status: that of
// the uninstaller when one ran.
int Uninstall(const Options& options, Catalogue& catalogue, const Found& found);

}  // namespace roundup::host
