// What kind of system this is, and where the host lies on it.
#pragma once

#include "platform/system.h"
#include "utility/fixedtext.h"

namespace roundup {

// True on a machine whose native architecture is x64, whatever the process is.
bool Is64BitOS();

// The version, with the numbers of the kernel itself where they can be had: the documented call may answer those of
// a compatibility mode. False when the machine tells no version at all.
bool GetOsVersion(OsVersionInfo& version);

// The folder of the host's executable without a backslash at its end; empty when it is not known or has 520 or more
// characters. Worked out once; good until the machine's scope ends.
const char16_t* GetExeFolder();

// The folder "cache" beside the host, which may not exist. False, and folder empty, when the host's folder is not
// known or the text does not fit.
bool GetCacheFolder(FixedText<260>& folder);

}  // namespace roundup
