// The machine that the process itself runs on.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/machine.h"

namespace roundup {

struct LiveOptions {
    // Receives what the module writes to the standard output of the process; without it, it goes there.
    std::function<void(std::u16string_view)> output;
};

// A view of the running Windows; null on every other system. For composition roots alone. One process may have several
// of them, one after another: what the objects of its process keep goes with each.
std::unique_ptr<Machine> OpenLiveMachine(LiveOptions options = {});

}  // namespace roundup
