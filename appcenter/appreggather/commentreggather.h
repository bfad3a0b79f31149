// What the books of Windows Installer say of the components that lie in a folder.
#pragma once

#include <string_view>

namespace roundup {

class CAppRuleSet;

// Adds the keys of the products whose components lie below the location to the included registry items. The books are
// read once for the machine.
void AddComponentItems(std::u16string_view location, CAppRuleSet& ruleSet);

}  // namespace roundup
