// The locks, with one interface, so that code that holds one does not care how it is built.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/system.h"
#include "platform/threading.h"

namespace roundup {

class ILock {
  public:
    ILock() = default;
    ILock(const ILock&) = delete;
    ILock& operator=(const ILock&) = delete;
    virtual ~ILock() = default;

    // Waits without limit.
    virtual void Lock() = 0;
    // From the thread that holds the lock.
    virtual void Unlock() = 0;
    // 0 when the lock was taken, something else when it is busy.
    virtual int TryLock() = 0;
};

// Recursive on one thread.
class CriticalSection final : public ILock {
  public:
    void Lock() override { m_mutex.lock(); }
    void Unlock() override { m_mutex.unlock(); }
    int TryLock() override { return m_mutex.try_lock() ? 0 : 1; }

  private:
    RecursiveMutex m_mutex;
};

// A mutex that the processes of a machine share by its name. Recursive on one thread. Belongs to the machine that is
// current when it is made, and must not outlive it. Where the machine has no such mutex, Lock and Unlock do nothing
// and TryLock answers busy.
class MutexLock final : public ILock {
  public:
    explicit MutexLock(const char16_t* name, bool initialOwner = false);
    ~MutexLock() override;

    void Lock() override;
    void Unlock() override;
    int TryLock() override;

  private:
    ISystem& m_system;
    MutexHandle m_mutex;
};

// An event that lets one waiter through each time it is set, and remembers one setting that nobody waited for.
class AutoResetEvent {
  public:
    explicit AutoResetEvent(bool signalled) noexcept : m_signalled(signalled) {}

    void Set();
    void Wait();
    // True when the event let the caller through within the time.
    bool WaitFor(std::chrono::milliseconds time);

  private:
    Mutex m_mutex;
    ConditionVariable m_changed;
    bool m_signalled;  // guarded by m_mutex
};

// A lock that is an event. This class has none: it takes nothing and is always busy.
class SpyLockBase {
  public:
    SpyLockBase() = default;
    SpyLockBase(const SpyLockBase&) = delete;
    SpyLockBase& operator=(const SpyLockBase&) = delete;
    virtual ~SpyLockBase() = default;

    // Waits without limit.
    virtual void Lock();
    // May come from another thread than Lock.
    virtual void Unlock();
    // Waits 200 milliseconds; true when it got the lock.
    virtual bool LockTimed();
    // 1 when the lock is taken. 0 when it was free, and it is left free.
    virtual int IsBusy();

  protected:
    explicit SpyLockBase(AutoResetEvent* event) noexcept : m_event(event) {}

  private:
    AutoResetEvent* m_event = nullptr;
};

// Not recursive: a thread that locks twice waits for ever.
class SpyNameLock final : public SpyLockBase {
  public:
    SpyNameLock() noexcept : SpyLockBase(&m_free) {}

  private:
    AutoResetEvent m_free{true};  // signalled while nobody holds the lock
};

// Holds a lock for the scope.
class LockGuard {
  public:
    explicit LockGuard(ILock& lock) : m_lock(&lock) { lock.Lock(); }
    explicit LockGuard(SpyLockBase& lock) : m_spyLock(&lock) { lock.Lock(); }
    ~LockGuard() {
        if (m_lock != nullptr) m_lock->Unlock();
        if (m_spyLock != nullptr) m_spyLock->Unlock();
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    ILock* m_lock = nullptr;
    SpyLockBase* m_spyLock = nullptr;
};

}  // namespace roundup
