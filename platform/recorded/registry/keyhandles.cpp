#include "platform/recorded/registry/keyhandles.h"

#include <bit>

namespace roundup {

namespace {

// A handle, from the lowest bit up: 4 bits of shard, 20 bits of index in it, 39 bits of serial number. The top bit is
// clear, which tells it from the predefined roots.
constexpr std::uint32_t kShardBits = 4;
constexpr std::uint32_t kShardMask = (1U << kShardBits) - 1;
constexpr std::uint64_t kSerialsAtOnce = 256;
static_assert(kThreadShards == 1U << kShardBits);

// Of all tables of the process: a machine that is made anew hands out other numbers than the one before.
std::atomic<std::uint64_t> g_nextSerial = 1;

}  // namespace

KeyHandles::~KeyHandles() {
    for (Shard& shard : m_shards) {
        for (std::atomic<Slot*>& chunk : shard.chunks) delete[] chunk.load(std::memory_order_relaxed);
    }
}

KeyHandle KeyHandles::Add(const OpenKeyState& state) {
    std::shared_ptr<MergedKey> merged;
    if (state.key.Single() == nullptr) merged = std::make_shared<MergedKey>();
    const std::uint32_t first = ThreadShard();
    for (std::uint32_t i = 0; i < kThreadShards; ++i) {
        const std::uint32_t number = (first + i) % kThreadShards;
        Shard& shard = m_shards[number];
        const std::lock_guard guard(shard.mutex);
        std::uint32_t index = 0;
        Slot* const slot = TakeSlot(shard, index);
        if (slot == nullptr) continue;
        slot->merged = std::move(merged);
        // Released, so that who sees them sees, too, that the slot's former handle is gone.
        slot->node.store(state.key.node, std::memory_order_release);
        slot->other.store(state.key.other, std::memory_order_release);
        slot->rest.store(std::uint64_t{state.access} << 32 | static_cast<std::uint64_t>(state.key.kind) << 8 |
                             static_cast<std::uint64_t>(state.view),
                         std::memory_order_release);
        const KeyHandle handle =
            (TakeSerial(shard) << (kShardBits + kIndexBits)) | (std::uint64_t{index} << kShardBits) | number;
        slot->handle.store(handle, std::memory_order_release);
        return handle;
    }
    return 0;
}

bool KeyHandles::Get(KeyHandle handle, OpenKeyState& state) const noexcept {
    const Slot* const slot = Find(handle);
    if (slot == nullptr) return false;
    RegistryNode* const node = slot->node.load(std::memory_order_acquire);
    RegistryNode* const other = slot->other.load(std::memory_order_acquire);
    const std::uint64_t rest = slot->rest.load(std::memory_order_acquire);
    // Closed in between: what was read may be of the next key in this slot.
    if (slot->handle.load(std::memory_order_relaxed) != handle) return false;
    state.key = {static_cast<KeyRef::Kind>((rest >> 8) & 0xFF), node, other};
    state.view = static_cast<RegistryView>(rest & 0xFF);
    state.access = static_cast<std::uint32_t>(rest >> 32);
    return true;
}

std::shared_ptr<MergedKey> KeyHandles::Merged(KeyHandle handle) {
    Slot* const slot = Find(handle);
    if (slot == nullptr) return nullptr;
    const std::lock_guard guard(m_shards[handle & kShardMask].mutex);
    if (slot->handle.load(std::memory_order_relaxed) != handle) return nullptr;
    return slot->merged;
}

void KeyHandles::Remove(KeyHandle handle) noexcept {
    Slot* const slot = Find(handle);
    if (slot == nullptr) return;
    Shard& shard = m_shards[handle & kShardMask];
    std::shared_ptr<MergedKey> merged;  // goes after the lock
    const std::lock_guard guard(shard.mutex);
    if (slot->handle.load(std::memory_order_relaxed) != handle) return;
    slot->handle.store(0, std::memory_order_relaxed);
    merged.swap(slot->merged);
    slot->nextFree = shard.firstFree;
    shard.firstFree = static_cast<std::uint32_t>((handle >> kShardBits) & ((1U << kIndexBits) - 1)) + 1;
}

KeyHandles::Slot* KeyHandles::SlotAt(const Shard& shard, std::uint32_t index) noexcept {
    const std::uint32_t number = (index >> kFirstChunkBits) + 1;
    const std::uint32_t chunk = static_cast<std::uint32_t>(std::bit_width(number)) - 1;
    if (chunk >= kChunks) return nullptr;
    Slot* const slots = shard.chunks[chunk].load(std::memory_order_acquire);
    const std::uint32_t start = ((1U << chunk) - 1) << kFirstChunkBits;
    return slots != nullptr ? slots + (index - start) : nullptr;
}

KeyHandles::Slot* KeyHandles::TakeSlot(Shard& shard, std::uint32_t& index) {
    if (shard.firstFree != 0) {
        index = shard.firstFree - 1;
        Slot* const slot = SlotAt(shard, index);
        shard.firstFree = slot->nextFree;
        return slot;
    }
    const std::uint32_t chunk = static_cast<std::uint32_t>(std::bit_width((shard.used >> kFirstChunkBits) + 1)) - 1;
    if (chunk >= kChunks) return nullptr;
    if (shard.chunks[chunk].load(std::memory_order_relaxed) == nullptr) {
        shard.chunks[chunk].store(new Slot[std::size_t{1} << (chunk + kFirstChunkBits)], std::memory_order_release);
    }
    index = shard.used++;
    return SlotAt(shard, index);
}

std::uint64_t KeyHandles::TakeSerial(Shard& shard) noexcept {
    if (shard.nextSerial == shard.endSerial) {
        shard.nextSerial = g_nextSerial.fetch_add(kSerialsAtOnce, std::memory_order_relaxed);
        shard.endSerial = shard.nextSerial + kSerialsAtOnce;
    }
    return shard.nextSerial++;
}

KeyHandles::Slot* KeyHandles::Find(KeyHandle handle) const noexcept {
    if (handle == 0 || (handle >> 63) != 0) return nullptr;
    const auto index = static_cast<std::uint32_t>((handle >> kShardBits) & ((1U << kIndexBits) - 1));
    Slot* const slot = SlotAt(m_shards[handle & kShardMask], index);
    return slot != nullptr && slot->handle.load(std::memory_order_acquire) == handle ? slot : nullptr;
}

}  // namespace roundup
