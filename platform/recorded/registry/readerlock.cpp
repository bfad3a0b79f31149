#include "platform/recorded/registry/readerlock.h"

#include <thread>

namespace roundup {

std::uint32_t ThreadShard() noexcept {
    static std::atomic<std::uint32_t> next = 0;
    thread_local const std::uint32_t shard = next.fetch_add(1, std::memory_order_relaxed) % kThreadShards;
    return shard;
}

void ReaderLock::WaitForWriter(std::atomic<std::uint32_t>& readers) noexcept {
    do {
        readers.fetch_sub(1, std::memory_order_release);
        { const std::lock_guard wait(m_writers); }
        readers.fetch_add(1, std::memory_order_seq_cst);
    } while (m_writing.load(std::memory_order_seq_cst));
}

void ReaderLock::lock() noexcept {
    m_writers.lock();
    m_writing.store(true, std::memory_order_seq_cst);
    for (Shard& shard : m_shards) {
        while (shard.readers.load(std::memory_order_seq_cst) != 0) std::this_thread::yield();
    }
}

void ReaderLock::unlock() noexcept {
    m_writing.store(false, std::memory_order_release);
    m_writers.unlock();
}

}  // namespace roundup
