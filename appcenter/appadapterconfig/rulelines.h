// Gives the lines of a rule file their meaning for one application.
#pragma once

#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadapterconfig/rulefile.h"

namespace roundup {

// Adds what the lines say to the included or, by kind, the excluded lists of the set; lists of one kind alone take
// the lines of both. A line that says nothing for this application is passed over.
void ApplyRuleLines(const RuleFile& file, RuleFileKind kind, const RuleSetSource& source, CAppRuleSet& rules);

// The path of a DIR or FILE value; empty when its base is not known, nothing follows the base, or it has none.
std::u16string ExpandRulePath(std::u16string_view value, const RuleSetSource& source);

}  // namespace roundup
