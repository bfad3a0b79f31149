// Reconciliation written down as the decision table reads, with loops over whole lists: what the indexed one is
// compared with.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/appcenter/reconcile_support.h"

namespace roundup {

struct RuleNames {
    std::vector<std::u16string> hideNames;
    std::vector<std::u16string> hideKeys;
    std::vector<std::u16string> subNames;
    std::vector<std::u16string> subKeys;
};

struct ProviderKey {
    std::u16string display;
    std::u16string dependent;  // first below Dependents, when there is that key
    std::u16string value;      // default value
};

// Everything that a reconciliation looks at but for suites. Keys of the maps are in upper case and sort as the
// registry does.
struct World {
    std::vector<Record> uninstalls;
    std::vector<Record> installs;
    std::map<std::u16string, RuleNames> rules;
    std::map<std::u16string, ProviderKey> providers;
    std::vector<std::pair<int, std::u16string>> components;  // code and key path
    std::map<std::u16string, std::vector<std::u16string>> lists;
};

CAppList ReferenceForest(const World& world);

}  // namespace roundup
