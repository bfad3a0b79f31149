#include "appcenter/appeunm/cachedobject.h"

#include <new>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"

namespace roundup {

RefPtr<IApp> NewCachedObject(CachedKind kind) {
    if (kind == CachedKind::Package) return RefPtr<CAppx>::Adopt(new (std::nothrow) CAppx);
    return RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
}

void DisownFiles(IApp& restored) {
    std::vector<IApp*> waiting{&restored};
    while (!waiting.empty()) {
        IApp* const next = waiting.back();
        waiting.pop_back();
        next->GetSubApps(waiting);
        auto* const app = dynamic_cast<CApp*>(next);
        if (app == nullptr) continue;
        for (const auto& file : app->Gathered().Files) {
            if (file->IsTemporary()) file->dwFlags |= FileFlags::kStaysOnDisk;
        }
    }
}

}  // namespace roundup
