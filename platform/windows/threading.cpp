#include "platform/threading.h"

#include <process.h>
#include <windows.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace roundup {

namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && sizeof(CONDITION_VARIABLE) == sizeof(void*));

SRWLOCK* LockAt(void*& lock) noexcept { return reinterpret_cast<SRWLOCK*>(&lock); }
CONDITION_VARIABLE* ConditionAt(void*& condition) noexcept { return reinterpret_cast<CONDITION_VARIABLE*>(&condition); }

}  // namespace

void Mutex::lock() noexcept { ::AcquireSRWLockExclusive(LockAt(m_lock)); }

void Mutex::unlock() noexcept { ::ReleaseSRWLockExclusive(LockAt(m_lock)); }

bool Mutex::try_lock() noexcept { return ::TryAcquireSRWLockExclusive(LockAt(m_lock)) != 0; }

void RecursiveMutex::lock() noexcept {
    const DWORD self = ::GetCurrentThreadId();
    if (m_owner.load(std::memory_order_relaxed) != self) {
        m_lock.lock();
        m_owner.store(self, std::memory_order_relaxed);
    }
    ++m_depth;
}

void RecursiveMutex::unlock() noexcept {
    if (--m_depth != 0) return;
    m_owner.store(0, std::memory_order_relaxed);
    m_lock.unlock();
}

bool RecursiveMutex::try_lock() noexcept {
    const DWORD self = ::GetCurrentThreadId();
    if (m_owner.load(std::memory_order_relaxed) != self) {
        if (!m_lock.try_lock()) return false;
        m_owner.store(self, std::memory_order_relaxed);
    }
    ++m_depth;
    return true;
}

void ConditionVariable::notify_one() noexcept { ::WakeConditionVariable(ConditionAt(m_condition)); }

void ConditionVariable::notify_all() noexcept { ::WakeAllConditionVariable(ConditionAt(m_condition)); }

void ConditionVariable::Sleep(Mutex& mutex, std::uint32_t milliseconds) noexcept {
    ::SleepConditionVariableSRW(ConditionAt(m_condition), LockAt(mutex.m_lock), milliseconds, 0);
}

Thread& Thread::operator=(Thread&& other) noexcept {
    if (joinable()) std::terminate();
    m_handle = std::exchange(other.m_handle, nullptr);
    m_number = std::exchange(other.m_number, 0);
    return *this;
}

Thread::~Thread() {
    if (joinable()) std::terminate();
}

void Thread::join() noexcept {
    ::WaitForSingleObject(m_handle, INFINITE);
    detach();
}

void Thread::detach() noexcept {
    ::CloseHandle(std::exchange(m_handle, nullptr));
    m_number = 0;
}

unsigned __stdcall Thread::Main(void* task) {
    std::unique_ptr<Task>(static_cast<Task*>(task))->Run();
    return 0;
}

// The C run-time library wants to know of threads that use it.
void Thread::Start(std::unique_ptr<Task> task) {
    unsigned number = 0;
    const std::uintptr_t handle = ::_beginthreadex(nullptr, 0, &Main, task.get(), 0, &number);
    if (handle == 0) throw std::system_error(errno, std::generic_category());
    (void)task.release();  // the thread's own from here on
    m_handle = reinterpret_cast<void*>(handle);
    m_number = number;
}

bool IsCurrent(const Thread& thread) noexcept { return thread.m_number == ::GetCurrentThreadId(); }

}  // namespace roundup
