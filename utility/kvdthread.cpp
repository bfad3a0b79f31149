#include "utility/kvdthread.h"

#include <chrono>
#include <mutex>
#include <new>
#include <system_error>

#include "platform/machine.h"
#include "platform/threading.h"
#include "utility/boundary.h"

namespace roundup {

struct CKvdThread::State {
    std::atomic<std::int32_t> exitCode{-1};
    std::atomic<std::uint32_t> threadId{0};

    void SetEnded() {
        const std::lock_guard guard(m_mutex);
        m_ended = true;
        m_changed.notify_all();
    }
    bool WaitEnded(std::uint32_t milliseconds) {
        std::unique_lock guard(m_mutex);
        const auto ended = [this] { return m_ended; };
        if (milliseconds != 0xFFFFFFFFU) {
            return m_changed.wait_for(guard, std::chrono::milliseconds(milliseconds), ended);
        }
        m_changed.wait(guard, ended);
        return true;
    }

  private:
    Mutex m_mutex;
    ConditionVariable m_changed;
    bool m_ended = false;  // guarded by m_mutex
};

CKvdThread::~CKvdThread() {
    // Work that frees its own thread may come here before Start has returned.
    const LockGuard guard(m_lock);
    if (!m_thread.joinable()) return;
    if (IsCurrent(m_thread)) {
        m_thread.detach();
    } else {
        m_thread.join();
    }
}

bool CKvdThread::Start() {
    (void)Wait(0);
    if (m_runnable == nullptr) return false;
    const LockGuard guard(m_lock);
    if (m_thread.joinable()) return false;
    m_runnable->SetStopFlag(0);
    try {
        m_state = std::make_shared<State>();
        m_thread = Thread([runnable = m_runnable, state = m_state] {
            const auto run = [&] {
                if (HasCurrentMachine()) state->threadId = CurrentMachine().System().GetThreadNumber();
                state->exitCode = runnable->Run();
            };
            // The exit code keeps saying that Run did not return.
            AtBoundary(run, [] {});
            state->threadId = 0;
            state->SetEnded();
        });
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

bool CKvdThread::WaitEnd() { return Wait(0xFFFFFFFFU) == kWaitEnded; }

std::int32_t CKvdThread::Wait(std::uint32_t milliseconds) {
    const std::shared_ptr<State> state = CurrentState();
    if (state == nullptr) return kWaitNoThread;
    // Without the lock, so that others can look and wait meanwhile.
    if (!state->WaitEnded(milliseconds)) return kWaitTimeout;
    CloseEnded(state);
    return kWaitEnded;
}

std::int32_t CKvdThread::ExitCode() {
    const LockGuard guard(m_lock);
    return m_state != nullptr ? m_state->exitCode.load() : -1;
}

std::uint32_t CKvdThread::ThreadId() {
    const LockGuard guard(m_lock);
    return m_state != nullptr ? m_state->threadId.load() : 0;
}

// The state of the thread that there is, or null.
std::shared_ptr<CKvdThread::State> CKvdThread::CurrentState() {
    const LockGuard guard(m_lock);
    return m_thread.joinable() ? m_state : nullptr;
}

// Another waiter may have closed it, and a new thread may stand in its place.
void CKvdThread::CloseEnded(const std::shared_ptr<State>& ended) {
    const LockGuard guard(m_lock);
    if (m_state == ended && m_thread.joinable()) m_thread.join();
}

}  // namespace roundup
