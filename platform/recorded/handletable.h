// Handles of a machine that is not live.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/threading.h"

namespace roundup {

// Set in every value of NextHandleValue. Handles of keys are numbers of their own, in which it is clear.
inline constexpr std::uint64_t kHandleMark = std::uint64_t{1} << 63;

// A value that no other call in this process answers, whatever it is for; never 0, and always even.
std::uint64_t NextHandleValue() noexcept;

// The objects behind handles. Every thread may call; an object lives on while somebody who asked for it still works
// with it.
template <class T>
class HandleTable {
  public:
    std::uint64_t Add(std::shared_ptr<T> object) {
        const std::uint64_t handle = NextHandleValue();
        Shard& shard = ShardOf(handle);
        const std::lock_guard guard(shard.lock);
        shard.objects.emplace(handle, std::move(object));
        return handle;
    }
    // Null for a value that is no open handle of this table.
    std::shared_ptr<T> Find(std::uint64_t handle) {
        Shard& shard = ShardOf(handle);
        const std::lock_guard guard(shard.lock);
        const auto found = shard.objects.find(handle);
        return found != shard.objects.end() ? found->second : nullptr;
    }
    std::shared_ptr<T> Take(std::uint64_t handle) {
        Shard& shard = ShardOf(handle);
        const std::lock_guard guard(shard.lock);
        const auto found = shard.objects.find(handle);
        if (found == shard.objects.end()) return nullptr;
        std::shared_ptr<T> object = std::move(found->second);
        shard.objects.erase(found);
        return object;
    }

  private:
    struct Shard {
        Mutex lock;
        std::unordered_map<std::uint64_t, std::shared_ptr<T>> objects;  // guarded by lock
    };
    // Enough that threads which open and close files side by side seldom meet.
    static constexpr std::size_t kShards = 16;
    Shard& ShardOf(std::uint64_t handle) noexcept { return m_shards[handle / 2 % kShards]; }

    std::array<Shard, kShards> m_shards;
};

}  // namespace roundup
