// Reconciliation written down as the decision table reads, with loops over whole lists: what the indexed one is
// compared with.
#pragma once

#include <vector>

#include "tests/appcenter/reconcile_support.h"

namespace roundup {

// Everything that such a reconciliation looks at: no suites, rules, dependency keys, components or lists.
struct World {
    std::vector<Record> uninstalls;
    std::vector<Record> installs;
};

CAppList ReferenceForest(const World& world);

}  // namespace roundup
