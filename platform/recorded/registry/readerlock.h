// A lock for what is read by many threads all the time and written hardly ever.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "platform/threading.h"

namespace roundup {

// Threads are dealt out to so many shards, so that each has, as long as there are not too many, memory of its own for
// what it writes often.
inline constexpr std::uint32_t kThreadShards = 16;
std::uint32_t ThreadShard() noexcept;

// Meets the requirements of a shared mutex, for std::shared_lock and std::lock_guard. Readers that do not meet a
// writer write to a cache line that no other thread touches, so they do not slow each other down. Not recursive.
class ReaderLock {
  public:
    ReaderLock() = default;
    ReaderLock(const ReaderLock&) = delete;
    ReaderLock& operator=(const ReaderLock&) = delete;

    void lock_shared() noexcept {
        std::atomic<std::uint32_t>& readers = m_shards[ThreadShard()].readers;
        // Either the writer sees this reader, or this reader sees the writer: both are sequentially consistent.
        readers.fetch_add(1, std::memory_order_seq_cst);
        if (m_writing.load(std::memory_order_seq_cst)) WaitForWriter(readers);
    }
    void unlock_shared() noexcept { m_shards[ThreadShard()].readers.fetch_sub(1, std::memory_order_release); }
    void lock() noexcept;
    void unlock() noexcept;

  private:
    struct alignas(64) Shard {
        std::atomic<std::uint32_t> readers = 0;
    };

    void WaitForWriter(std::atomic<std::uint32_t>& readers) noexcept;

    Shard m_shards[kThreadShards];
    alignas(64) std::atomic<bool> m_writing = false;
    Mutex m_writers;
};

}  // namespace roundup
