#include "appcenter/enumappx/loadappx.h"

namespace roundup {

CLoadAppx::CLoadAppx(const IContinue& goOn, AppList& packages) : m_goOn(goOn), m_packages(packages) { Start(); }

void CLoadAppx::Walk() {}

}  // namespace roundup
