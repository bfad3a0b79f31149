#include "appcenter/appeunm/attachclaims.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <unordered_set>
#include <utility>

#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/lookahead.h"
#include "utility/log.h"

namespace roundup {
namespace {

struct Claim {
    std::size_t position;
    Guid code;
};

void Attach(CAppList& main, ParentPositions& parents, std::size_t parent, std::size_t child, LinkReason reason) {
    LinkSubApp(*main[parent], main[child], reason);
    parents[child] = parent;
}

// Row 5. A code finds the first application that has it and is still free; what one application claims hangs below it
// in list order.
void AttachByCode(const IContinue& goOn, CAppList& main, ParentPositions& parents) {
    FirstByCode byCode;
    for (const RefPtr<CApp>& app : main) {
        for (const Guid& code : app->RelatedCodes) byCode.Want(code);
    }
    if (byCode.IsEmpty()) return;
    for (std::size_t i = 0; i < main.size(); ++i) {
        LookAhead<&CApp::ProductCode>(main, i);
        if (!main[i]->ProductCode.IsNil()) byCode.AddWanted(main[i]->ProductCode, i);
    }
    const auto isFree = [&parents](std::size_t position) { return parents[position] == kNoPosition; };
    std::vector<Claim> claims;
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        claims.clear();
        for (const Guid& code : main[i]->RelatedCodes) {
            const std::size_t found = byCode.FirstLeft(code, isFree, i);
            if (found != kNoPosition) claims.push_back({found, code});
        }
        std::ranges::sort(claims, {}, &Claim::position);
        for (const Claim& claim : claims) {
            Attach(main, parents, i, claim.position, LinkReason::Code);
            main[i]->RelatedCodes.erase(claim.code);
        }
    }
}

// Row 6.
void AttachByParentName(const IContinue& goOn, CAppList& main, ParentPositions& parents) {
    FirstByText byName;
    for (const RefPtr<CApp>& app : main) {
        if (!app->pwszParentDisplayName.IsEmpty()) byName.Want(app->pwszParentDisplayName);
    }
    if (byName.IsEmpty()) return;
    for (std::size_t i = 0; i < main.size(); ++i) {
        LookAhead<&CApp::pwszName>(main, i);
        if (!main[i]->pwszName.IsEmpty()) byName.AddWanted(main[i]->pwszName, i);
    }
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        if (parents[i] != kNoPosition || main[i]->pwszParentDisplayName.IsEmpty()) continue;
        const std::size_t found = byName.First(main[i]->pwszParentDisplayName, main);
        if (found != kNoPosition && found != i) Attach(main, parents, found, i, LinkReason::ParentName);
    }
}

void CutLink(CApp& parent, const CApp* child) {
    TraceLine(u"recursion dislodge App: %s", child->pwszName);
    const auto at = std::ranges::find(parent.SubApps, static_cast<const IApp*>(child), &RefPtr<IApp>::Get);
    if (at != parent.SubApps.end()) parent.SubApps.erase(at);
}

}  // namespace

ParentPositions AttachClaimed(const IContinue& goOn, CAppList& main) {
    ParentPositions parents(main.size(), kNoPosition);
    AttachByCode(goOn, main, parents);
    AttachByParentName(goOn, main, parents);
    CutCircles(main, parents);
    return parents;
}

// Everything has one parent at most, so a walk up from an application ends at a root, at what an earlier walk has seen,
// or in a circle, at what it has seen itself.
void CutCircles(const CAppList& apps, const ParentPositions& parents) {
    std::vector<std::size_t> seenBy(parents.size(), kNoPosition);
    for (std::size_t start = 0; start < parents.size(); ++start) {
        std::size_t at = start;
        while (at != kNoPosition && seenBy[at] == kNoPosition) {
            seenBy[at] = start;
            at = parents[at];
        }
        const bool isCircle = at != kNoPosition && seenBy[at] == start;
        if (isCircle) CutLink(*apps[parents[at]], apps[at].Get());
    }
}

// Row 7. HasLocation looks at the parts too: whatever has none of its own lives on in them.
void SortMain(const IContinue& goOn, CAppList& main, const ParentPositions& parents, CAppList& hide) {
    const GapCloser closer(main);
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) return;
        LookAhead<&CApp::pwszName, &CApp::pwszKeyString, &CApp::pwszMsiPath>(main, i);
        const CApp& app = *main[i];
        const bool isApplication =
            parents[i] == kNoPosition && !app.pwszName.IsEmpty() && !app.pwszKeyString.IsEmpty() && app.HasLocation();
        if (!isApplication) {
            main[i].Reset();
        } else if ((app.qwFlags & AppFlags::kNotTopLevel) != 0) {
            hide.push_back(std::move(main[i]));
        }
    }
}

// Row 19, breadth first. An application that waits in the queue a second time has had its parts queued already.
void BreakCycles(const IContinue& goOn, const CAppList& main) {
    std::unordered_set<const IApp*> visited;
    std::deque<IApp*> queue;
    for (const RefPtr<CApp>& root : main) {
        if (goOn.IsContinue() == 0) return;
        if (root->SubApps.empty()) continue;
        visited.clear();
        queue.assign(1, root.Get());
        while (!queue.empty()) {
            auto* const app = dynamic_cast<CApp*>(queue.front());
            queue.pop_front();
            if (app == nullptr) continue;
            const bool isFirstTime = visited.insert(app).second;
            std::erase_if(app->SubApps, [&](const RefPtr<IApp>& sub) {
                const bool wasMet = visited.contains(sub.Get());
                if (wasMet) TraceLine(u"recursion dislodge App: %s", sub->GetName());
                return wasMet;
            });
            if (!isFirstTime) continue;
            for (const RefPtr<IApp>& sub : app->SubApps) queue.push_back(sub.Get());
        }
    }
}

}  // namespace roundup
