// The machine that the command line names.
#pragma once

#include <memory>
#include <string>

#include "host/options.h"
#include "platform/machine.h"

namespace roundup::host {

// Opens the machine; without a name the one that the program runs on, where that is a Windows. Null when there is none,
// and message says why, on one line.
std::unique_ptr<Machine> ChooseMachine(const Options& options, std::string& message);

}  // namespace roundup::host
