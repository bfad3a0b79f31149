// Starts uninstall commands and tells the host how they ended.
#pragma once

#include <cstdint>

#include "externfuncinc/roundup.h"
#include "utility/ownedstring.h"

namespace roundup {

class CRoundup;

class CUnInstallManager {
  public:
    // owner outlives the object and is not counted.
    explicit CUnInstallManager(CRoundup* owner) noexcept : m_owner(owner) {}
    CUnInstallManager(const CUnInstallManager&) = delete;
    CUnInstallManager& operator=(const CUnInstallManager&) = delete;
    virtual ~CUnInstallManager() = default;

    // Starts the command, without a window when hidden is set; the observer learns the exit code together with record.
    // True when the process was started.
    bool AddUnInstallProc(const OwnedString& command, std::uint8_t hidden, IRmxApp* record);

  private:
    [[maybe_unused]] CRoundup* const m_owner;  // who knows the observer that is to learn how an uninstall ended
};

}  // namespace roundup
