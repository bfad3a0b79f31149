// How the program says that something went wrong.
#pragma once

#include <string>

namespace roundup::host {

inline constexpr const char* kOutputFailed = "standard output cannot be written";

// Writes one line to standard error. The exit status of a failure.
int Complain(const std::string& message);

}  // namespace roundup::host
