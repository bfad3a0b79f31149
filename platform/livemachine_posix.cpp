#include "platform/livemachine.h"

namespace roundup {

std::unique_ptr<Machine> OpenLiveMachine() { return nullptr; }

}  // namespace roundup
