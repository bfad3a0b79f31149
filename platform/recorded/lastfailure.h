// The failure that GetLastError of a machine that is not live tells: one for each thread.
#pragma once

#include "platform/win32.h"

namespace roundup {

// Operations of a recorded machine note their failure here when the platform's operation of that name sets the last
// error. Those of the registry return their error and set none, as on Windows.
void SetLastFailure(Win32Error error) noexcept;
Win32Error LastFailure() noexcept;

}  // namespace roundup
