// Reconciliation: what the rule files and the compatibility lists beside the host say of parts.
#pragma once

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "appcenter/app/icontinue.h"
#include "appcenter/appadapterconfig/ruleitems.h"
#include "appcenter/appeunm/patternindex.h"
#include "appcenter/appeunm/reconcilelists.h"
#include "utility/casemap.h"
#include "utility/result.h"

namespace roundup {

class CAppManager;
class CAppRuleSet;

// What rules name: parts of names, and keys.
class RuleTargets {
  public:
    void Add(const RuleTexts& names, const RuleTexts& keys, std::size_t position) {
        for (const OwnedString& name : names) m_names.Add(name, position);
        for (const OwnedString& key : keys) m_keys.try_emplace(std::u16string(key), position);
    }
    // Positions come in ascending order, so the first that named a key stays.
    std::size_t First(const CApp& app) {
        const std::size_t byName = m_names.First(app.pwszName);
        const auto byKey = m_keys.find(app.pwszKeyString.View());
        return byKey != m_keys.end() ? std::min(byName, byKey->second) : byName;
    }

  private:
    PatternIndex m_names;
    std::unordered_map<std::u16string, std::size_t, NoCaseHash, NoCaseEqual> m_keys;
};

struct SubAppRules {
    RuleTexts names;  // parts of names
    RuleTexts keys;
};

// What the rules of the applications say of sub-applications. Both passes over rules want it, and between them little
// happens that rules depend on.
class RuleBook {
  public:
    // Makes the rules of each application of the list: notes what they say of sub-applications, and adds what they hide
    // to hidden. Adapters may narrow the location of an application that they know.
    void Make(const IContinue& goOn, const CAppList& main, RuleTargets& hidden);
    // The application has another location now.
    void Forget(const CApp& app) { m_forgotten.insert(&app); }
    // The sub-application rules of an application; null when it has none. Made anew when they are not known.
    const SubAppRules* Find(CApp& app);

  private:
    const SubAppRules* Note(const CApp& app, CAppRuleSet& rules);

    bool m_isWhole = false;  // the rules of the whole list have been made
    std::unordered_map<const CApp*, SubAppRules> m_rules;
    std::unordered_set<const CApp*> m_forgotten;
};

// A pass, see hidepasses.h: what an application's rules hide hangs below it.
ResultCode AttachByRules(CAppManager& manager, CAppList& main, CAppList& hide, RuleBook& rules);

// What an application's rules name as its parts leaves the list and hangs below it. The applications with such rules
// come first on the list afterwards, and are nobody's parts.
void AttachRuleSubApps(const IContinue& goOn, CAppList& main, RuleBook& rules);

// What the compatibility list of an application names leaves the list and hangs below it, in the order of that list
// and then of the list of applications; the sizes add up.
void AttachCompatible(const IContinue& goOn, CAppList& main);

}  // namespace roundup
