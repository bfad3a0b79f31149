// The machine that the command line names.
#pragma once

#include <memory>
#include <string>

#include "host/options.h"
#include "platform/machine.h"

namespace roundup::host {

// The machine to work on, and its owner when it is not the live one.
struct ChosenMachine {
    std::unique_ptr<Machine> owned;
    Machine* machine = nullptr;
};

// Opens the machine. When there is none, machine is null and message says why, on one line.
ChosenMachine ChooseMachine(const Options& options, std::string& message);

}  // namespace roundup::host
