// What the rule files and the adapters say of one application.
#pragma once

#include <string_view>

#include "appcenter/appadapterconfig/ruleitems.h"
#include "utility/stringcontainers.h"

namespace roundup {

class CApp;
class IApp;
struct AppRecordEx;

// What the rule files of an application are found by, and what their paths stand on. Read while the set is made.
struct RuleSetSource {
    std::u16string_view key;               // pwszKeyString
    std::u16string_view location;          // pwszInstallLoc
    std::u16string_view typeDescription;   // pwszTypeDes; names the files in place of the key when it is not empty
    std::u16string_view originalLocation;  // pwszOriginalInstallLoc
};

// Made for one application, on the stack, and used by one thread. The files themselves are read once (RuleFileStore):
// an application without a rule file costs two look-ups. Lists have the order of the files, then of the adapters, then
// of those that add rules of their own; empty texts are never in them. What the standard library throws for want of
// memory goes through.
class CAppRuleSet {
  public:
    // Empty.
    CAppRuleSet() = default;
    // Reads "%s\Config\%s.INC" and ".EXC" of the host's folder. Files that are missing, broken or above
    // kLargestRuleFile add nothing.
    explicit CAppRuleSet(const RuleSetSource& source);
    CAppRuleSet(const CAppRuleSet&) = delete;
    CAppRuleSet& operator=(const CAppRuleSet&) = delete;

    // The rules for all applications, those of the key "{00000000-0000-0000-0000-000000000000}". Made at first use,
    // once for the machine.
    static const CAppRuleSet& Global();

    // Whole paths are compared, ignoring case; what lies in an excluded directory is not excluded by that. True for
    // null and empty paths, and for what the global rules exclude.
    bool IsFileExcluded(TextOrNull path) const;
    bool IsDirExcluded(TextOrNull path) const;

    bool HasSubAppRules() const noexcept { return !SubAppNames.empty() || !SubAppKeys.empty(); }
    // True when the name contains one of the names or the key is one of the keys, ignoring case. The first form asks
    // with the texts of the application's record, which are cut to 259 characters.
    bool IsSubAppMatch(const IApp& app) const;
    bool IsSubAppMatch(std::u16string_view name, std::u16string_view key) const noexcept;
    bool IsHideAppMatch(const IApp& app) const;
    bool IsHideAppMatch(std::u16string_view name, std::u16string_view key) const noexcept;

    // One trailing backslash is cut. Answers as RuleTexts::Add.
    bool AddIncludedDirectory(std::u16string_view path);
    bool AddExcludedDirectory(std::u16string_view path);

    RuleRegItems ExcludedRegs;
    RuleRegItems IncludedRegs;
    RuleTexts ExcludedFiles;
    RuleTexts IncludedFiles;
    RuleTexts ExcludedDirectories;
    RuleTexts IncludedDirectories;
    RuleTexts Actions;  // carried and stored; the system itself starts none of them
    RuleTexts HideNames;
    RuleTexts HideKeys;
    RuleTexts SubAppNames;
    RuleTexts SubAppKeys;
    bool bAppendProc = false;
};

}  // namespace roundup
