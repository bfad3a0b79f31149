#include "appcenter/appeunm/rulepasses.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadaptermgr/appadaptermgr.h"
#include "appcenter/appadaptermgr/compatibility.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/attachclaims.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/patternindex.h"
#include "utility/casemap.h"

namespace roundup {
namespace {

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

// Makes the rules of each application and hands them to take with its position. Adapters may narrow the location of an
// application that they know.
template <class Take>
void ForEachRules(const IContinue& goOn, const CAppList& main, Take take) {
    Ignore(LoadAdapters(), u"without adapters the rule files stand alone");
    for (std::size_t i = 0; i < main.size() && goOn.IsContinue() != 0; ++i) {
        CApp& app = *main[i];
        CAppRuleSet rules(
            RuleSetSource{app.pwszKeyString, app.pwszInstallLoc, app.pwszTypeDes, app.pwszOriginalInstallLoc});
        Ignore(ApplyAdapters(&app, &rules), u"what the adapters could tell stands in the rules");
        take(rules, i);
    }
}

// Positions of the list by key.
using KeyPositions = std::unordered_map<std::u16string_view, std::vector<std::size_t>, NoCaseHash, NoCaseEqual>;

struct Listed {
    std::uint32_t number;  // in the compatibility list
    std::size_t position;
};

// What a compatibility list names of what is still on the list, but for its own application, in the order in which it
// is attached. What is found leaves the index.
std::vector<Listed> FindListed(const CompatibilityMap& names, KeyPositions& byKey, const CAppList& main,
                               std::size_t owner) {
    std::vector<Listed> found;
    for (const auto& [name, number] : names) {
        const auto at = byKey.find(name.View());
        if (at == byKey.end()) continue;
        for (const std::size_t position : at->second) {
            if (position != owner && main[position]) found.push_back({number, position});
        }
        std::erase_if(at->second, [owner](std::size_t position) { return position != owner; });
    }
    std::ranges::sort(found, {}, [](const Listed& listed) { return std::pair(listed.number, listed.position); });
    return found;
}

}  // namespace

// Row 15.
ResultCode AttachByRules(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    RuleTargets targets;
    ForEachRules(manager, main, [&targets](const CAppRuleSet& rules, std::size_t position) {
        targets.Add(rules.HideNames, rules.HideKeys, position);
    });
    for (RefPtr<CApp>& app : hide) {
        if (manager.IsContinue() == 0) break;
        const std::size_t found = targets.First(*app);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(app), LinkReason::Rule);
    }
    return kSuccess;
}

// Row 20. Every application's list is read, also when an earlier one has taken the application itself off the list.
void AttachCompatible(const IContinue& goOn, CAppList& main) {
    const CAppList all(main);
    const GapCloser closer(main);
    KeyPositions byKey;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i]->pwszKeyString.IsEmpty()) byKey[all[i]->pwszKeyString].push_back(i);
    }
    ParentPositions parents(all.size(), kNoPosition);
    for (std::size_t i = 0; i < all.size() && goOn.IsContinue() != 0; ++i) {
        CompatibilityMap names;
        LoadCompatibility(all[i]->pwszKeyString, names);
        for (const Listed& listed : FindListed(names, byKey, main, i)) {
            all[i]->llEstimatedSize += main[listed.position]->llEstimatedSize;
            LinkSubApp(*all[i], std::move(main[listed.position]), LinkReason::CompatibilityList);
            parents[listed.position] = i;
        }
    }
    CutCircles(all, parents);
}

// Row 22.
void AttachRuleSubApps(const IContinue& goOn, CAppList& main) {
    CAppList owners;
    CAppList others;
    RuleTargets targets;
    std::size_t taken = 0;
    ForEachRules(goOn, main, [&](const CAppRuleSet& rules, std::size_t position) {
        taken = position + 1;
        if (!rules.HasSubAppRules()) {
            others.push_back(std::move(main[position]));
            return;
        }
        targets.Add(rules.SubAppNames, rules.SubAppKeys, owners.size());
        owners.push_back(std::move(main[position]));
    });
    for (RefPtr<CApp>& app : others) {
        if (goOn.IsContinue() == 0) break;
        const std::size_t found = targets.First(*app);
        if (found != kNoPosition) LinkSubApp(*owners[found], std::move(app), LinkReason::Rule);
    }
    main = std::move(owners);
    const GapCloser closer(main);
    main.insert(main.end(), std::make_move_iterator(others.begin()), std::make_move_iterator(others.end()));
}

}  // namespace roundup
