#include "appcenter/appeunm/productsource.h"

namespace roundup {

ProductEnumerator::ProductEnumerator(const IContinue& goOn, AppList& installs) : m_goOn(goOn), m_installs(installs) {
    Start();
}

void ProductEnumerator::Walk() {}

}  // namespace roundup
