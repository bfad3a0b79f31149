#include "appcenter/appeunm/sourcethread.h"

#include "utility/boundary.h"
#include "utility/result.h"

namespace roundup {

void SourceThread::Start() {
    if (!m_thread.Start()) Run();
}

std::int32_t SourceThread::Run() {
    const ResultCode rc = AtBoundary(
        [this] {
            Walk();
            return kSuccess;
        },
        [] { return Fail(SmallCode::ObjectAllocation); });
    Ignore(rc, u"what the source has found stays");
    return 0;
}

}  // namespace roundup
