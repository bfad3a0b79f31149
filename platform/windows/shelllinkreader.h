// Reads .lnk files through the shell's link object.
#pragma once

#include "platform/shell.h"

namespace roundup {

// ReadLink of the seam, on a thread that has entered an apartment.
bool ReadShellLink(const char16_t* path, ShellLink& link);

}  // namespace roundup
