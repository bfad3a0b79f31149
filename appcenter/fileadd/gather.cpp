// The gather of an application: declared with it, defined here, since it needs what stands above it.
#include "appcenter/app/app.h"

namespace roundup {

// None of the sources that a gather draws on exists yet, so nothing belongs to an application beyond its entry.
ResultCode CApp::Gather(IApp* /*root*/, IRemoveRepeatReg* /*filter*/) { return kSuccess; }

}  // namespace roundup
