// One entry of an Uninstall key.
#pragma once

#include "appcenter/appeunm/entryvalues.h"

namespace roundup {

class CApp;

// Where the entries of one source come from.
struct EntryOrigin {
    bool currentUser;  // HKEY_CURRENT_USER, else HKEY_LOCAL_MACHINE
    bool view64;       // read through the 64-bit view
    bool is64BitOS;
};

// Fills a new application from its entry: name, codes, parent, size, flags, location, programs and icon. The texts
// move out of keyName and values. Asks the machine's files about the paths.
void FillFromEntry(CApp& app, OwnedString keyName, EntryValues& values, const EntryOrigin& origin);

}  // namespace roundup
