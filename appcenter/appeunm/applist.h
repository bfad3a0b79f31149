// Lists of counted applications.
#pragma once

#include <vector>

#include "appcenter/app/iapp.h"
#include "utility/kvobject.h"

namespace roundup {

using AppList = std::vector<RefPtr<IApp>>;

}  // namespace roundup
