// The machine that the process itself runs on.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace roundup {

// A view of the running Windows; null on every other system. For composition roots alone. One process may have several
// of them, one after another: what the objects of its process keep goes with each.
std::unique_ptr<Machine> OpenLiveMachine();

}  // namespace roundup
