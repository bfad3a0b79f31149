// The lines of rule files that ask the registry. Each adds to the list what it finds; a key that cannot be opened
// adds nothing and is not logged. "Both views" is the 32-bit view, and on a 64-bit machine the 64-bit view after it.
#pragma once

#include <functional>
#include <string_view>

#include "appcenter/appadapterconfig/ruleitems.h"

namespace roundup {

// The value of a REG line: a plain item, which need not exist, or one of the questions INST, UINS and COMP.
void AddRegRule(std::u16string_view value, RuleRegItems& items);

// The value of a REGX line: the subkeys of a key, in both views, whose names match a pattern.
void AddRegPatternRule(std::u16string_view value, RuleRegItems& items);

// The value of a REGDIR line: calls add with each text, in both views, that the value holds.
void ReadRegDirectories(std::u16string_view value, const std::function<void(std::u16string_view)>& add);

}  // namespace roundup
