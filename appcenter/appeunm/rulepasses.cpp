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
#include "appcenter/appeunm/lookahead.h"
#include "appcenter/appeunm/patternindex.h"
#include "utility/casemap.h"
#include "utility/flatmap.h"

namespace roundup {
namespace {

// Adapters may narrow the location of an application that they know.
template <class Take>
void WithRules(CApp& app, Take take) {
    CAppRuleSet rules(
        RuleSetSource{app.pwszKeyString, app.pwszInstallLoc, app.pwszTypeDes, app.pwszOriginalInstallLoc});
    Ignore(ApplyAdapters(&app, &rules), u"what the adapters could tell stands in the rules");
    take(rules);
}

// The compatibility lists of the applications that have one, and where the applications stand that they name.
class CompatibilityLists {
  public:
    // A list by the position of its owner.
    using Lists = std::vector<std::pair<std::size_t, CompatibilityMap>>;

    CompatibilityLists(const IContinue& goOn, const CAppList& apps) {
        for (std::size_t i = 0; i < apps.size() && goOn.IsContinue() != 0; ++i) {
            CompatibilityMap names;
            LoadCompatibility(apps[i]->pwszKeyString, names);
            if (!names.empty()) m_lists.emplace_back(i, std::move(names));
        }
        for (const auto& [owner, names] : m_lists) {
            for (const auto& [name, number] : names) m_named.TryAdd(name, {});
        }
        for (std::size_t i = 0; i < apps.size() && !m_lists.empty(); ++i) {
            Positions* const positions = m_named.Find(apps[i]->pwszKeyString);
            if (positions != nullptr) positions->push_back(i);
        }
    }
    const Lists& All() const noexcept { return m_lists; }

    // Where the applications stand that the names stand for, but for their owner, in the order in which they are
    // attached. They are not found again.
    std::vector<std::size_t> Take(const CompatibilityMap& names, std::size_t owner) {
        std::vector<std::pair<std::uint32_t, std::size_t>> found;
        for (const auto& [name, number] : names) {
            Positions& positions = *m_named.Find(name);
            for (const std::size_t position : positions) {
                if (position != owner) found.emplace_back(number, position);
            }
            std::erase_if(positions, [owner](std::size_t position) { return position != owner; });
        }
        std::ranges::sort(found);
        std::vector<std::size_t> ordered;
        ordered.reserve(found.size());
        for (const auto& [number, position] : found) ordered.push_back(position);
        return ordered;
    }

  private:
    using Positions = std::vector<std::size_t>;

    Lists m_lists;
    FlatMap<std::u16string_view, Positions, NoCaseHash, NoCaseEqual> m_named;
};

}  // namespace

void RuleBook::Make(const IContinue& goOn, const CAppList& main, RuleTargets& hidden) {
    Ignore(LoadAdapters(), u"without adapters the rule files stand alone");
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        LookAhead<&CApp::pwszKeyString, &CApp::pwszName, &CApp::pwszInstallLoc>(main, i);
        const bool wasNarrowed = main[i]->bLocationNarrowed;
        WithRules(*main[i], [&](CAppRuleSet& rules) {
            hidden.Add(rules.HideNames, rules.HideKeys, i);
            if (rules.HasSubAppRules()) Note(*main[i], rules);
        });
        // Another adapter may know it by the folder that it has now.
        if (main[i]->bLocationNarrowed != wasNarrowed) Forget(*main[i]);
    }
    m_isWhole = true;
}

const SubAppRules* RuleBook::Note(const CApp& app, CAppRuleSet& rules) {
    SubAppRules& noted = m_rules[&app];
    noted = {std::move(rules.SubAppNames), std::move(rules.SubAppKeys)};
    return &noted;
}

const SubAppRules* RuleBook::Find(CApp& app) {
    if (m_isWhole && !m_forgotten.contains(&app)) {
        const auto noted = m_rules.find(&app);
        return noted != m_rules.end() ? &noted->second : nullptr;
    }
    const SubAppRules* found = nullptr;
    WithRules(app, [&](CAppRuleSet& rules) {
        if (rules.HasSubAppRules()) found = Note(app, rules);
    });
    return found;
}

// Row 15.
ResultCode AttachByRules(CAppManager& manager, CAppList& main, CAppList& hide, RuleBook& rules) {
    const GapCloser closer(hide);
    RuleTargets targets;
    rules.Make(manager, main, targets);
    for (RefPtr<CApp>& app : hide) {
        if (manager.IsContinue() == 0) break;
        const std::size_t found = targets.First(*app);
        if (found != kNoPosition) LinkSubApp(*main[found], std::move(app), LinkReason::Rule);
    }
    return kSuccess;
}

// Row 20. Every application's list is read, also when an earlier one has taken the application itself off the list.
void AttachCompatible(const IContinue& goOn, CAppList& main) {
    CompatibilityLists lists(goOn, main);
    if (lists.All().empty()) return;
    const CAppList all(main);
    const GapCloser closer(main);
    ParentPositions parents(all.size(), kNoPosition);
    for (const auto& [owner, names] : lists.All()) {
        if (goOn.IsContinue() == 0) break;
        for (const std::size_t position : lists.Take(names, owner)) {
            all[owner]->llEstimatedSize += main[position]->llEstimatedSize;
            LinkSubApp(*all[owner], std::move(main[position]), LinkReason::CompatibilityList);
            parents[position] = owner;
        }
    }
    CutCircles(all, parents);
}

// Row 22.
void AttachRuleSubApps(const IContinue& goOn, CAppList& main, RuleBook& rules) {
    const GapCloser closer(main);
    Ignore(LoadAdapters(), u"without adapters the rule files stand alone");
    CAppList owners;
    CAppList others;
    RuleTargets targets;
    for (RefPtr<CApp>& app : main) {
        if (goOn.IsContinue() == 0) return;
        const SubAppRules* const found = rules.Find(*app);
        if (found != nullptr) targets.Add(found->names, found->keys, owners.size());
        (found != nullptr ? owners : others).push_back(std::move(app));
    }
    for (RefPtr<CApp>& app : others) {
        if (goOn.IsContinue() == 0) break;
        const std::size_t found = targets.First(*app);
        if (found != kNoPosition) LinkSubApp(*owners[found], std::move(app), LinkReason::Rule);
    }
    main = std::move(owners);
    main.insert(main.end(), std::make_move_iterator(others.begin()), std::make_move_iterator(others.end()));
}

}  // namespace roundup
