#include "utility/locks.h"

#include "platform/machine.h"

namespace roundup {

namespace {

constexpr std::uint32_t kWithoutLimit = 0xFFFFFFFFU;
constexpr std::chrono::milliseconds kTimedWait{200};

}  // namespace

MutexLock::MutexLock(const char16_t* name, bool initialOwner)
    : m_system(CurrentMachine().System()), m_mutex(m_system.OpenMutex(name, initialOwner)) {}

MutexLock::~MutexLock() {
    if (m_mutex != 0) m_system.CloseMutex(m_mutex);
}

void MutexLock::Lock() {
    if (m_mutex != 0) (void)m_system.LockMutex(m_mutex, kWithoutLimit);
}

void MutexLock::Unlock() {
    if (m_mutex != 0) m_system.UnlockMutex(m_mutex);
}

int MutexLock::TryLock() { return m_mutex != 0 && m_system.LockMutex(m_mutex, 0) ? 0 : 1; }

void AutoResetEvent::Set() {
    const std::lock_guard guard(m_mutex);
    m_signalled = true;
    // Under the lock, since the waiter that it wakes may destroy the event.
    m_changed.notify_one();
}

void AutoResetEvent::Wait() {
    std::unique_lock guard(m_mutex);
    m_changed.wait(guard, [this] { return m_signalled; });
    m_signalled = false;
}

bool AutoResetEvent::WaitFor(std::chrono::milliseconds time) {
    std::unique_lock guard(m_mutex);
    if (!m_changed.wait_for(guard, time, [this] { return m_signalled; })) return false;
    m_signalled = false;
    return true;
}

void SpyLockBase::Lock() {
    if (m_event != nullptr) m_event->Wait();
}

void SpyLockBase::Unlock() {
    if (m_event != nullptr) m_event->Set();
}

bool SpyLockBase::LockTimed() { return m_event != nullptr && m_event->WaitFor(kTimedWait); }

int SpyLockBase::IsBusy() {
    if (m_event == nullptr || !m_event->WaitFor(std::chrono::milliseconds::zero())) return 1;
    m_event->Set();
    return 0;
}

}  // namespace roundup
