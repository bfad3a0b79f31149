// Open keys by handle.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/recorded/registry/readerlock.h"
#include "platform/recorded/registry/registryviews.h"
#include "platform/threading.h"

namespace roundup {

// What enumerations of a key answer from that two nodes make up. Made at the first enumeration, and anew when the
// registry has changed since.
struct MergedKey {
    Mutex mutex;
    bool isMade = false;        // mutex
    std::uint64_t version = 0;  // mutex: of the store when content was made
    KeyContent content;         // mutex
    KeyInfo info;               // mutex: of content
};

struct OpenKeyState {
    KeyRef key;
    std::uint32_t access = 0;  // granted: KEY_... bits of winnt.h
    RegistryView view = RegistryView::Native;
};

// Every operation may be called from every thread. A number is handed out once in the life of the process, by whatever
// table; a number that is not open is known as such.
class KeyHandles {
  public:
    KeyHandles() = default;
    ~KeyHandles();
    KeyHandles(const KeyHandles&) = delete;
    KeyHandles& operator=(const KeyHandles&) = delete;

    // 0 when some millions of keys are open already. Throws std::bad_alloc.
    KeyHandle Add(const OpenKeyState& state);
    // False for a handle that is not open; state is left alone then. Takes no lock.
    bool Get(KeyHandle handle, OpenKeyState& state) const noexcept;
    // Null when the handle is not open.
    std::shared_ptr<MergedKey> Merged(KeyHandle handle);
    void Remove(KeyHandle handle) noexcept;

  private:
    // The members that Get reads are atomic, since a stale handle may be asked for while its slot gets another key.
    struct Slot {
        std::atomic<KeyHandle> handle = 0;
        std::atomic<RegistryNode*> node = nullptr;
        std::atomic<RegistryNode*> other = nullptr;
        std::atomic<std::uint64_t> rest = 0;  // kind, view and access
        std::uint32_t nextFree = 0;           // mutex of the shard; index plus 1
        std::shared_ptr<MergedKey> merged;    // mutex of the shard
    };

    // Slots come in chunks, each twice as large as the one before, which never move: Get needs no lock.
    static constexpr std::uint32_t kFirstChunkBits = 6;
    static constexpr std::uint32_t kIndexBits = 20;
    static constexpr std::uint32_t kChunks = kIndexBits - kFirstChunkBits;

    struct alignas(64) Shard {
        Mutex mutex;
        std::uint32_t firstFree = 0;   // mutex; index plus 1
        std::uint32_t used = 0;        // mutex: slots handed out at least once
        std::uint64_t nextSerial = 0;  // mutex
        std::uint64_t endSerial = 0;   // mutex
        std::array<std::atomic<Slot*>, kChunks> chunks{};
    };

    static Slot* SlotAt(const Shard& shard, std::uint32_t index) noexcept;
    static Slot* TakeSlot(Shard& shard, std::uint32_t& index);
    static std::uint64_t TakeSerial(Shard& shard) noexcept;
    Slot* Find(KeyHandle handle) const noexcept;

    std::array<Shard, kThreadShards> m_shards;
};

}  // namespace roundup
