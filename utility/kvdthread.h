// Threads: something that can run, and the thread that runs it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/threading.h"
#include "utility/locks.h"

namespace roundup {

class CKvdRunable {
  public:
    CKvdRunable() = default;
    CKvdRunable(const CKvdRunable&) = delete;
    CKvdRunable& operator=(const CKvdRunable&) = delete;
    virtual ~CKvdRunable() = default;

    // The thread's work; the result is the thread's exit code.
    virtual std::int32_t Run() = 0;

    // Asks Run to end soon, when it looks at the flag. From every thread.
    void SetStopFlag(std::uint8_t flag) noexcept { m_stopFlag.store(flag, std::memory_order_relaxed); }
    std::uint8_t StopFlag() const noexcept { return m_stopFlag.load(std::memory_order_relaxed); }

  private:
    std::atomic<std::uint8_t> m_stopFlag{0};
};

inline constexpr std::int32_t kWaitEnded = 0;
inline constexpr std::int32_t kWaitTimeout = 0x102;
inline constexpr std::int32_t kWaitNoThread = -1;

// Runs one runnable, which is not owned, must outlive the thread and must be changed only while none runs. The
// operations may be called from every thread but the one that runs, which may only destroy this object.
class CKvdThread {
  public:
    explicit CKvdThread(CKvdRunable* runnable) noexcept : m_runnable(runnable) {}
    CKvdThread(const CKvdThread&) = delete;
    CKvdThread& operator=(const CKvdThread&) = delete;
    // Waits for the thread. On the thread itself it lets go of it instead, so that work may end by freeing what it
    // ran on.
    virtual ~CKvdThread();

    // Clears the stop flag and starts a thread. False without a runnable, while the thread of an earlier start still
    // runs, and when none could be had.
    bool Start();
    // Waits without limit; true when the thread ended, false when there is none.
    bool WaitEnd();
    // Waits so many milliseconds (0xFFFFFFFF: without limit). Once the thread has ended there is none any more.
    std::int32_t Wait(std::uint32_t milliseconds);

    // What Run gave; -1 until it returned, and when it was left by an exception.
    std::int32_t ExitCode();
    // The machine's number of the thread; 0 while none runs.
    std::uint32_t ThreadId();

  private:
    // What the thread itself touches behind Run; it may outlive the object.
    struct State;

    std::shared_ptr<State> CurrentState();
    void CloseEnded(const std::shared_ptr<State>& ended);

    CriticalSection m_lock;
    // Guarded by m_lock.
    Thread m_thread;  // joinable while there is a thread
    std::shared_ptr<State> m_state;
    // Constant after construction.
    CKvdRunable* m_runnable;
};

}  // namespace roundup
