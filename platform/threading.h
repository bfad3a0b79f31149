// Locks and threads: those of the standard library, under names of their own.
//
// In the Windows builds they are the system's. The thread library that a run-time library for them brings along opens
// handles and takes memory for its locks and for every thread that uses one, and gives them back neither when the lock
// goes nor when the module is unloaded. A program may load and unload the module as often as it likes.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#ifndef _WIN32
#include <condition_variable>
#include <thread>
#endif

namespace roundup {

#ifndef _WIN32

using Mutex = std::mutex;
using RecursiveMutex = std::recursive_mutex;
using ConditionVariable = std::condition_variable;
using Thread = std::thread;

// True on the thread that the object stands for.
inline bool IsCurrent(const Thread& thread) noexcept { return thread.get_id() == std::this_thread::get_id(); }

#else

// As std::mutex. A slim lock of the system, which has nothing to give back.
class Mutex {
  public:
    constexpr Mutex() noexcept = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() noexcept;
    void unlock() noexcept;
    bool try_lock() noexcept;

  private:
    friend class ConditionVariable;
    void* m_lock = nullptr;
};

// As std::recursive_mutex.
class RecursiveMutex {
  public:
    constexpr RecursiveMutex() noexcept = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void lock() noexcept;
    void unlock() noexcept;
    bool try_lock() noexcept;

  private:
    Mutex m_lock;
    std::atomic<std::uint32_t> m_owner{0};  // 0: nobody; a thread finds its own number here only when it holds the lock
    std::uint32_t m_depth = 0;              // guarded by m_lock
};

// As std::condition_variable.
class ConditionVariable {
  public:
    constexpr ConditionVariable() noexcept = default;
    ConditionVariable(const ConditionVariable&) = delete;
    ConditionVariable& operator=(const ConditionVariable&) = delete;

    void notify_one() noexcept;
    void notify_all() noexcept;
    template <class Ready>
    void wait(std::unique_lock<Mutex>& lock, Ready ready) {
        while (!ready()) Sleep(*lock.mutex(), kWithoutLimit);
    }
    template <class Duration, class Ready>
    bool wait_for(std::unique_lock<Mutex>& lock, Duration time, Ready ready) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (!ready()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            if (left.count() <= 0) return false;
            Sleep(*lock.mutex(), static_cast<std::uint32_t>(std::min<std::int64_t>(left.count(), kLongestSleep)));
        }
        return true;
    }

  private:
    static constexpr std::uint32_t kWithoutLimit = 0xFFFFFFFFU;
    static constexpr std::int64_t kLongestSleep = 1000 * 60 * 60;

    void Sleep(Mutex& mutex, std::uint32_t milliseconds) noexcept;

    void* m_condition = nullptr;
};

// As std::thread, with the one constructor that is used. Throws std::system_error when no thread can be had.
class Thread {
  public:
    Thread() noexcept = default;
    template <class Work>
    requires std::is_invocable_v<Work&>
    explicit Thread(Work work) { Start(std::make_unique<TaskOf<Work>>(std::move(work))); }
    Thread(Thread&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr)), m_number(std::exchange(other.m_number, 0)) {}
    Thread& operator=(Thread&& other) noexcept;
    ~Thread();

    bool joinable() const noexcept { return m_handle != nullptr; }
    void join() noexcept;
    void detach() noexcept;

  private:
    friend bool IsCurrent(const Thread& thread) noexcept;

    struct Task {
        virtual ~Task() = default;
        virtual void Run() = 0;
    };
    template <class Work>
    struct TaskOf final : Task {
        explicit TaskOf(Work given) : work(std::move(given)) {}
        void Run() override { work(); }
        Work work;
    };

    static unsigned __stdcall Main(void* task);
    void Start(std::unique_ptr<Task> task);

    void* m_handle = nullptr;
    std::uint32_t m_number = 0;
};

bool IsCurrent(const Thread& thread) noexcept;

#endif

}  // namespace roundup
