// The queue through which one thread hands jobs to others.
#pragma once

#include <deque>
#include <utility>

#include "utility/locks.h"

namespace roundup {

// First in, first out; any number of threads on both sides. Job is a pointer, plain or counted.
//
// One event wakes one sleeper, and whoever passes the lock without having used up the reason to be awake sets it
// again: a taker that leaves jobs behind, and everyone who finds or leaves the queue closed. So a single Set of Add or
// Close reaches as many sleepers as there is work for, and after Close all of them, also when a taker never comes back.
template <class Job>
class JobQueue {
  public:
    JobQueue() = default;
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    // False, and the job is dropped, when the queue is closed.
    bool Add(Job job) {
        {
            const LockGuard guard(m_lock);
            if (m_closed) return false;
            m_jobs.push_back(std::move(job));
        }
        m_event.Set();
        return true;
    }

    // Waits for a job. False when the queue is closed and has no more.
    bool Take(Job& job) {
        for (;;) {
            {
                const LockGuard guard(m_lock);
                const bool found = !m_jobs.empty();
                if (found) {
                    job = std::move(m_jobs.front());
                    m_jobs.pop_front();
                }
                if (m_closed || !m_jobs.empty()) m_event.Set();
                if (found || m_closed) return found;
            }
            m_event.Wait();
        }
    }

    // Takes no more jobs and lets the takers finish what waits.
    void Close() {
        {
            const LockGuard guard(m_lock);
            m_closed = true;
        }
        m_event.Set();
    }

    // As Close, but drops the jobs that wait; allocates nothing, since queues end when memory is short, too.
    void CloseAndDiscard() {
        Close();
        Job dropped{};
        while (TakeWaiting(dropped)) continue;
    }

  private:
    bool TakeWaiting(Job& job) {
        const LockGuard guard(m_lock);
        if (m_jobs.empty()) return false;
        job = std::move(m_jobs.front());
        m_jobs.pop_front();
        return true;
    }

    CriticalSection m_lock;
    AutoResetEvent m_event{false};
    std::deque<Job> m_jobs;  // guarded by m_lock
    bool m_closed = false;   // guarded by m_lock
};

}  // namespace roundup
