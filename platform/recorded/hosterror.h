// What the computer's own error numbers are to the platform.
#pragma once

#include "platform/win32.h"

namespace roundup {

// error is an errno number (errno.h); one that has no counterpart is a read fault.
Win32Error FromErrno(int error) noexcept;

}  // namespace roundup
