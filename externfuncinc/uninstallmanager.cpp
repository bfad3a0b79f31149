#include "externfuncinc/uninstallmanager.h"

#include <utility>

#include "externfuncinc/externfunc.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/kvdthread.h"
#include "utility/locks.h"
#include "utility/result.h"

namespace roundup {

// The way from the wait threads to the facade. The host may close the facade while an uninstall runs, and the thread
// that asks afterwards must not find a pointer to what is gone.
class CUnInstallManager::OwnerLine {
  public:
    explicit OwnerLine(CRoundup* owner) noexcept : m_owner(owner) {}

    // The observer of this moment; null when there is none, or no facade any more.
    IRoundupObserver* Observer() {
        const LockGuard guard(m_lock);
        return m_owner != nullptr ? m_owner->Observer() : nullptr;
    }
    void Cut() {
        const LockGuard guard(m_lock);
        m_owner = nullptr;
    }

  private:
    CriticalSection m_lock;
    CRoundup* m_owner;  // guarded by m_lock
};

// One running uninstall. From a successful start on it belongs to its own thread, which frees it.
class CUnInstallManager::WaitProcEntry final : public CKvdRunable {
  public:
    WaitProcEntry(ProcessHandle process, std::uint32_t processId, std::shared_ptr<IRmxApp> record,
                  std::shared_ptr<OwnerLine> line) noexcept
        : m_processes(CurrentMachine().Processes()),
          m_process(process),
          m_processId(processId),
          m_record(std::move(record)),
          m_line(std::move(line)),
          m_thread(this) {}

    bool Start() { return m_thread.Start(); }

    std::int32_t Run() override {
        const std::unique_ptr<WaitProcEntry> self(this);
        if (const Win32Error error = m_processes.Wait(m_process); error != kErrorSuccess) {
            Ignore(FailWin32(error, m_processId), u"the exit code tells as much as can be told");
        }
        if (const Win32Error error = m_processes.GetExitCode(m_process, m_exitCode); error != kErrorSuccess) {
            Ignore(FailWin32(error, m_processId), u"the host waits for the end, whatever the code is");
        }
        m_processes.Close(m_process);
        // Without a lock: calls for several uninstalls may overlap, and each may take its time.
        if (IRoundupObserver* const observer = m_line->Observer()) {
            observer->OnUnInstallDone(m_record.get(), m_exitCode);
        }
        return 0;
    }

  private:
    // Constant after construction.
    IProcesses& m_processes;
    const ProcessHandle m_process;
    const std::uint32_t m_processId;
    const std::shared_ptr<IRmxApp> m_record;
    const std::shared_ptr<OwnerLine> m_line;
    // Owned by the wait thread.
    std::uint32_t m_exitCode = 0;

    CKvdThread m_thread;
};

CUnInstallManager::CUnInstallManager(CRoundup* owner) : m_line(std::make_shared<OwnerLine>(owner)) {}

CUnInstallManager::~CUnInstallManager() { m_line->Cut(); }

bool CUnInstallManager::AddUnInstallProc(const OwnedString& command, std::uint8_t hidden,
                                         std::shared_ptr<IRmxApp> record) {
    if (command.IsEmpty()) return false;
    ProcessHandle process = 0;
    std::uint32_t processId = 0;
    const std::uint32_t flags = hidden != 0 ? kCreateNoWindow : 0;
    const Win32Error error = CurrentMachine().Processes().Start(command.Text(), flags, process, processId);
    if (error != kErrorSuccess || process == 0) {
        Ignore(FailWin32(error, process), u"the caller tells the host that nothing was started");
        return false;
    }
    return AddProc(process, processId, std::move(record));
}

bool CUnInstallManager::AddProc(ProcessHandle process, std::uint32_t processId, std::shared_ptr<IRmxApp> record) {
    const auto start = [&] {
        auto entry = std::make_unique<WaitProcEntry>(process, processId, std::move(record), m_line);
        if (!entry->Start()) return false;
        // It may be freed already.
        (void)entry.release();
        return true;
    };
    if (AtBoundary(start, [] { return false; })) return true;
    Ignore(Fail(SmallCode::ObjectMissing, processId), u"the caller tells the host that nobody waits");
    CurrentMachine().Processes().Close(process);
    return false;
}

}  // namespace roundup
