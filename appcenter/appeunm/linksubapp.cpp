#include "appcenter/appeunm/linksubapp.h"

#include <utility>

namespace roundup {

void LinkSubApp(CApp& parent, RefPtr<CApp> child, LinkReason reason) {
    CApp& app = *child;
    parent.SubApps.emplace_back(std::move(child));
    if (!parent.pwszKeyString.IsEmpty() && app.pwszParentKeyName.IsEmpty()) {
        AssignString(app.pwszParentKeyName, parent.pwszKeyString);
    }
    app.eLinkReason = reason;
}

}  // namespace roundup
