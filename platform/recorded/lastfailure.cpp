#include "platform/recorded/lastfailure.h"

namespace roundup {

namespace {

thread_local Win32Error t_lastFailure = kErrorSuccess;

}  // namespace

void SetLastFailure(Win32Error error) noexcept { t_lastFailure = error; }

Win32Error LastFailure() noexcept { return t_lastFailure; }

}  // namespace roundup
