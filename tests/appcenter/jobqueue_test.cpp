#include "appcenter/appeunm/jobqueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace roundup {
namespace {

// Takers that leave after one job each, as workers do once the go-on flag is cleared: the rest must still wake up and
// end, or a load would hang in its join.
TEST(JobQueue, TakersThatLeave_NeverStrandTheOthers) {
    for (int round = 0; round < 200; ++round) {
        JobQueue<int*> queue;
        std::vector<int> jobs(3);
        std::vector<std::thread> takers;
        for (int i = 0; i < 8; ++i) {
            takers.emplace_back([&queue] {
                int* job = nullptr;
                if (queue.Take(job)) ++*job;
            });
        }
        for (int& job : jobs) queue.Add(&job);
        queue.Close();
        for (std::thread& taker : takers) taker.join();
        EXPECT_EQ(jobs, std::vector<int>(3, 1)) << "each job once";
    }
}

}  // namespace
}  // namespace roundup
