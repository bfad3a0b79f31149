#include "externfuncinc/uninstallmanager.h"

namespace roundup {

// Nothing waits for a process yet, and one that nobody waits for must not be started.
bool CUnInstallManager::AddUnInstallProc(const OwnedString& /*command*/, std::uint8_t /*hidden*/, IRmxApp* /*record*/) {
    return false;
}

}  // namespace roundup
