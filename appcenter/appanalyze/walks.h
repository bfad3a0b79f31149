// The walks of a gather: which folders belong to an application, and the files in them.
#pragma once

#include <string_view>

#include "msianalyzer/itemcallback.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

class CApp;
class CAppRegGather;
class CAppRuleSet;
class IRemoveRepeatReg;

// What a walk feeds: each top folder as ItemType::kFolder with size 0, and each file below it.
struct GatherSink {
    ItemCallback add = nullptr;
    void* context = nullptr;
};

// None has a result: what cannot be read is passed over, and what was reported stands. filter may be null; a folder
// that it has seen was walked for another application of the tree and is left alone. Nothing happens without a sink.

// The included directories of the rules.
void WalkRuleDirs(const CAppRuleSet& ruleSet, const GatherSink& sink, IRemoveRepeatReg* filter);
// One folder, unless it is the system's or excluded.
void WalkLocation(const OwnedString& path, const CAppRuleSet& ruleSet, const GatherSink& sink,
                  IRemoveRepeatReg* filter);
// The folders that the registry gather found.
void WalkRegistryPaths(const CAppRegGather& gather, const CAppRuleSet& ruleSet, const GatherSink& sink,
                       IRemoveRepeatReg* filter);

// Enters the included directories, and the folders of the included files, that exist among the directories of the
// root. GeneralFailure without a root.
ResultCode AddRuleDirectories(const CAppRuleSet& ruleSet, CApp* root);

}  // namespace roundup
