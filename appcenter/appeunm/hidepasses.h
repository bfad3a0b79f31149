// Reconciliation: the passes over what is no application of its own and has not found one yet.
//
// Each pass tries one more way to hang a hidden application below one of the main list, always the first of that list
// that fits, and takes it off the hide list. The main list itself never changes. A pass that fails logs its failure
// and leaves on the lists what it has not moved; the caller goes on with the next pass. A pass ends early when the
// manager's IsContinue turns false.
#pragma once

#include "appcenter/appeunm/reconcilelists.h"
#include "utility/result.h"

namespace roundup {

class CAppManager;

// The one lies in the other's folder, or they share it.
ResultCode AttachSameFolder(CAppManager& manager, CAppList& main, CAppList& hide);
// The provider keys of the installer's dependencies lead from one to the other.
ResultCode AttachByDependency(CAppManager& manager, CAppList& main, CAppList& hide);
// It was installed from a folder of the other's source, or of that of one of its parts.
ResultCode AttachBySource(CAppManager& manager, CAppList& main, CAppList& hide);
// Both are the same runtime library, by what the runtime recogniser says. GeneralFailure without one.
ResultCode AttachRuntimes(CAppManager& manager, CAppList& main, CAppList& hide);
// A component of it lies in the other's folder, by the books of the installer.
ResultCode AttachBySharedComponent(CAppManager& manager, CAppList& main, CAppList& hide);

}  // namespace roundup
