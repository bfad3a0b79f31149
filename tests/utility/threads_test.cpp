// Locks and threads; the thread sanitizer watches them too.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "utility/kvdthread.h"
#include "utility/locks.h"

namespace roundup {
namespace {

template <class Lock>
int CountUnder(Lock& lock) {
    int count = 0;  // plain: the lock alone keeps the threads apart
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 500; ++k) {
                const LockGuard guard(lock);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    return count;
}

TEST(Locks, FourThreads_ComeInOneAtATime) {
    CriticalSection section;
    SpyNameLock spy;
    EXPECT_EQ(CountUnder(section), 2000);
    EXPECT_EQ(CountUnder(spy), 2000);
}

TEST(Locks, SpyNameLock_IsBusyWhileHeldAndFreeAfterTheQuestion) {
    SpyNameLock lock;
    EXPECT_EQ(lock.IsBusy(), 0);
    EXPECT_TRUE(lock.LockTimed());
    EXPECT_EQ(lock.IsBusy(), 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(lock.LockTimed());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
    std::thread([&] { lock.Unlock(); }).join();
    EXPECT_EQ(lock.IsBusy(), 0);
}

// Waits until it is told to go on, so that a test sees the thread in its midst.
class Gate : public CKvdRunable {
  public:
    std::int32_t Run() override {
        while (StopFlag() == 0 && !m_open) std::this_thread::yield();
        return StopFlag() != 0 ? 7 : 42;
    }
    void Open() { m_open = true; }

  private:
    std::atomic<bool> m_open{false};
};

TEST(KvdThread, RunningThread_RefusesASecondStartAndTimesOut) {
    Gate gate;
    CKvdThread thread(&gate);
    EXPECT_FALSE(thread.WaitEnd());
    EXPECT_EQ(thread.Wait(0), kWaitNoThread);
    ASSERT_TRUE(thread.Start());
    EXPECT_FALSE(thread.Start());
    EXPECT_EQ(thread.Wait(1), kWaitTimeout);
    EXPECT_EQ(thread.ExitCode(), -1);
    gate.SetStopFlag(1);
    EXPECT_TRUE(thread.WaitEnd());
    EXPECT_EQ(thread.ExitCode(), 7);
    EXPECT_EQ(thread.ThreadId(), 0U);
    EXPECT_EQ(thread.Wait(0), kWaitNoThread);
    // A new start forgets the stop that ended the first one.
    gate.Open();
    ASSERT_TRUE(thread.Start());
    EXPECT_EQ(thread.Wait(60'000), kWaitEnded);
    EXPECT_EQ(thread.ExitCode(), 42);
}

TEST(KvdThread, ManyWaiters_AllSeeTheEnd) {
    Gate gate;
    CKvdThread thread(&gate);
    ASSERT_TRUE(thread.Start());
    std::atomic<int> ended{0};
    std::atomic<int> waiting{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            ++waiting;
            // One that comes when the end was seen already finds no thread.
            const std::int32_t answer = thread.Wait(60'000);
            if (answer == kWaitEnded || answer == kWaitNoThread) ++ended;
        });
    }
    while (waiting < 4) std::this_thread::yield();
    gate.Open();
    for (std::thread& waiter : waiters) waiter.join();
    EXPECT_EQ(ended, 4);
}

TEST(KvdThread, ExceptionInRun_EndsTheThreadWithTheCodeOfNone) {
    struct Thrower : CKvdRunable {
        std::int32_t Run() override { throw std::runtime_error("from a thread"); }
    } thrower;
    CKvdThread thread(&thrower);
    ASSERT_TRUE(thread.Start());
    EXPECT_TRUE(thread.WaitEnd());
    EXPECT_EQ(thread.ExitCode(), -1);
    CKvdThread nothing(nullptr);
    EXPECT_FALSE(nothing.Start());
}

TEST(KvdThread, WorkThatFreesItsOwnThread_EndsWhole) {
    struct Entry : CKvdRunable {
        explicit Entry(std::atomic<bool>& flag) : done(flag), thread(this) {}
        std::int32_t Run() override {
            std::atomic<bool>& flag = done;
            delete this;
            flag = true;
            return 0;
        }
        std::atomic<bool>& done;
        CKvdThread thread;
    };
    std::atomic<bool> done{false};
    auto* const entry = new Entry(done);
    ASSERT_TRUE(entry->thread.Start());
    while (!done) std::this_thread::yield();
}

}  // namespace
}  // namespace roundup
