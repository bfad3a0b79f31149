#include "platform/livemachine.h"

namespace roundup {

std::unique_ptr<Machine> OpenLiveMachine(LiveOptions) { return nullptr; }

}  // namespace roundup
