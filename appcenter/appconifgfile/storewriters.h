// The records that a gather writes itself.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "utility/result.h"

namespace roundup {

class CAppConfigStore;
class CAppRegGather;
class CAppRuleSet;
class CWFYFile;
class IRemoveRepeatReg;

// The registry keys and values that the rules and the registry gather name, in both views, type 4: each is one record
// (docs/formats.md), a key with everything beneath it. What the filter, which may be null, has seen is left out. What
// cannot be read writes nothing and is no failure; a failure ends its own list alone.
void WriteRegistryRecord(const CAppRuleSet& ruleSet, const CAppRegGather& gather, CAppConfigStore& store,
                         IRemoveRepeatReg* filter);
// The shortcuts that point at the files, type 6. Nothing without any. A failure leaves the record unfinished.
ResultCode WriteShortcutRecord(const std::vector<std::unique_ptr<CWFYFile>>& files, CAppConfigStore& store);
// The values of the Uninstall key of that name under both roots, in both views, type 10.
void WriteUninstallRecord(std::u16string_view key, CAppConfigStore& store);

}  // namespace roundup
