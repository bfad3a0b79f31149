// The walk over an application and what lies below it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "appcenter/app/app.h"

namespace roundup {

// Visits root and all below it, each before its sub-applications and those in list order, until a visit answers true;
// answers whether one did. own is called with a CApp&, other with an IApp& of another kind, below which nothing is
// looked for. Forests made from a hostile registry can be as deep as it has keys, so the walk keeps its own stack.
template <class Own, class Other>
bool AnyInForest(CApp& root, Own own, Other other) {
    if (own(root)) return true;
    std::vector<IApp*> open;
    const auto openBelow = [&open](const CApp& app) {
        const auto former = static_cast<std::ptrdiff_t>(open.size());
        for (const RefPtr<IApp>& sub : app.SubApps) {
            if (sub) open.push_back(sub.Get());
        }
        std::reverse(open.begin() + former, open.end());
    };
    openBelow(root);
    while (!open.empty()) {
        IApp* const next = open.back();
        open.pop_back();
        auto* const app = dynamic_cast<CApp*>(next);
        if (app != nullptr ? own(*app) : other(*next)) return true;
        if (app != nullptr) openBelow(*app);
    }
    return false;
}

// The same over what is only read.
template <class Own, class Other>
bool AnyInForest(const CApp& root, Own own, Other other) {
    return AnyInForest(
        const_cast<CApp&>(root), [&own](const CApp& app) { return own(app); },
        [&other](const IApp& app) { return other(app); });
}

}  // namespace roundup
