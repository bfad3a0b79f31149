#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "tests/support/machinetest.h"
#include "utility/locks.h"

namespace roundup {
namespace {

using Mutex = MachineTest;

int AskFromAnotherThread(ILock& lock) {
    int answer = 0;
    std::thread([&] {
        answer = lock.TryLock();
        if (answer == 0) lock.Unlock();
    }).join();
    return answer;
}

TEST_F(Mutex, SameName_IsOneLockThatOneThreadMayTakeTwice) {
    Start();
    MutexLock first(u"Global\\roundup_test_mutex", true);
    MutexLock second(u"Global\\roundup_test_mutex");
    MutexLock other(u"Global\\roundup_test_other");
    second.Lock();  // the initial owner is this thread
    second.Unlock();
    EXPECT_NE(AskFromAnotherThread(second), 0);
    EXPECT_EQ(AskFromAnotherThread(other), 0);
    first.Unlock();
    EXPECT_EQ(AskFromAnotherThread(second), 0);
}

}  // namespace
}  // namespace roundup
