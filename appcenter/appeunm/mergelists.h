// Reconciliation, the first half: one record for each application, whatever lists it stood on.
//
// Each step ends early when goOn turns false; what it then leaves is fit to be released and no more.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// Consumes the uninstall list; answers it with the entries of one key and name merged into the first of them.
CAppList RemoveDuplicates(const IContinue& goOn, CAppList uninstalls);

// Merges each install record into the first application with its code or package, and takes it off the install list.
void MergeInstallRecords(const IContinue& goOn, CAppList& apps, CAppList& installs);

// Hangs each patch of the install list below the first application that claims its code.
void AttachPatches(const IContinue& goOn, CAppList& main, CAppList& installs);

// Writes what is known of an application that leaves the catalogue; what names the list that it remained on.
void LogRemaining(const char16_t* what, const CApp& app);

}  // namespace roundup
