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

TEST(JobQueue, ClosedQueue_HandsOutWhatWaitsAndTakesNoMore) {
    JobQueue<int*> queue;
    int numbers[3] = {};
    EXPECT_TRUE(queue.Add(&numbers[0]));
    EXPECT_TRUE(queue.Add(&numbers[1]));
    queue.Close();
    EXPECT_FALSE(queue.Add(&numbers[2]));
    int* job = nullptr;
    EXPECT_TRUE(queue.Take(job));
    EXPECT_EQ(job, &numbers[0]) << "first in, first out";
    queue.CloseAndDiscard();
    EXPECT_FALSE(queue.Take(job));
}

}  // namespace
}  // namespace roundup
