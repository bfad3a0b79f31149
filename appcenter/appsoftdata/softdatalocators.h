// The places where known applications write down where the data of their users is. For AddSoftDataRules alone, which
// holds g_SoftDataLock; texts that these readers cut out of foreign files are not validated beyond what they need.
#pragma once

#include <string>
#include <string_view>

#include "utility/result.h"

namespace roundup {

class CApp;
class CAppRuleSet;

// Each adds rules to the set; one that the set holds already is no failure. Failures have been logged.

// The mail stores of the profiles of the suite's year, which pwszTypeDes names; success, and no rule, for any other.
ResultCode LocateOutlook(const CApp& app, CAppRuleSet& ruleSet);
ResultCode LocateThunderbird(const CApp& app, CAppRuleSet& ruleSet);
ResultCode LocateLiveMail(const CApp& app, CAppRuleSet& ruleSet);
ResultCode LocateMinecraft(const CApp& app, CAppRuleSet& ruleSet);
// The service's key and the folder of its configuration.
ResultCode LocateMySql(const CApp& app, CAppRuleSet& ruleSet);

// The roaming application data folder of the user, with a backslash at its end. Small code 1 when there is none.
ResultCode GetRoamingFolder(std::u16string& folder);

// What a line that says "gameDir" tells: the folder, in UTF-8, as the file escapes it. Empty when it tells none.
std::string_view FindGameFolder(std::string_view line) noexcept;
// The path in a preference line, behind its first colon and up to the quote in front of its last ")". Small code 1, not
// logged, when there is none.
ResultCode ExtractPrefPath(std::u16string_view line, std::u16string& path);
// Makes every "\\" a "\", as these files escape it.
std::u16string Unescape(std::u16string_view text);

}  // namespace roundup
