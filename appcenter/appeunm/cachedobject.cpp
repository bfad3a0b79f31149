#include "appcenter/appeunm/cachedobject.h"

#include <new>
#include <vector>

#include "appcenter/app/app.h"

namespace roundup {

ResultCode NewCachedObject(CachedKind kind, RefPtr<IApp>& object) {
    if (kind != CachedKind::Application) return FailQuiet(SmallCode::NotAvailable);
    object = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
    return object ? kSuccess : FailQuiet(SmallCode::BufferAllocation);
}

void DisownFiles(IApp& restored) {
    std::vector<IApp*> waiting{&restored};
    while (!waiting.empty()) {
        IApp* const next = waiting.back();
        waiting.pop_back();
        next->GetSubApps(waiting);
        auto* const app = dynamic_cast<CApp*>(next);
        if (app == nullptr) continue;
        for (const auto& file : app->Files) {
            if (file->IsTemporary()) file->dwFlags |= FileFlags::kStaysOnDisk;
        }
    }
}

}  // namespace roundup
