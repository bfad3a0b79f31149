// Starts uninstall commands and tells the host how they ended.
#pragma once

#include <cstdint>
#include <memory>

#include "externfuncinc/roundup.h"
#include "platform/processes.h"
#include "utility/ownedstring.h"

namespace roundup {

class CRoundup;

// Each uninstall has a thread of its own that waits for its process, however long that takes, and then calls
// OnUnInstallDone. Nothing lists the running ones, serialises them or cancels them. The threads may outlive this
// object and the facade: they find the way to the observer cut then, and tell nobody.
class CUnInstallManager {
  public:
    // owner is not counted; it outlives the object.
    explicit CUnInstallManager(CRoundup* owner);
    CUnInstallManager(const CUnInstallManager&) = delete;
    CUnInstallManager& operator=(const CUnInstallManager&) = delete;
    virtual ~CUnInstallManager();

    // Starts the command as it stands, without a window when hidden is set, and waits for it with AddProc. record is
    // handed to the observer, and kept until that call has returned. False, and no call to the observer, when the
    // command is empty or its process could not be started.
    bool AddUnInstallProc(const OwnedString& command, std::uint8_t hidden, std::shared_ptr<IRmxApp> record);
    // Takes over the process and starts the thread that waits for it. False when there is none: the process goes on,
    // and nobody is told of its end.
    bool AddProc(ProcessHandle process, std::uint32_t processId, std::shared_ptr<IRmxApp> record);

  private:
    class OwnerLine;
    class WaitProcEntry;

    const std::shared_ptr<OwnerLine> m_line;  // shared with the wait threads
};

}  // namespace roundup
