// The one way to hang an application below another one.
#pragma once

#include "appcenter/app/app.h"
#include "utility/kvobject.h"

namespace roundup {

// The child becomes the last of the parent's sub-applications, which own it from then on, and learns the parent's key
// when it names no parent key of its own.
void LinkSubApp(CApp& parent, RefPtr<CApp> child, LinkReason reason);

}  // namespace roundup
