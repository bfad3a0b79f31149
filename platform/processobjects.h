// The store behind ProcessWide<T>(): one slot for each type, filled once.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/threading.h"

namespace roundup {

class ProcessObjects {
  public:
    ProcessObjects() = default;
    ProcessObjects(const ProcessObjects&) = delete;
    ProcessObjects& operator=(const ProcessObjects&) = delete;
    ~ProcessObjects() { Clear(); }

    // A filled slot costs one atomic load; an empty one is filled under its own lock, so that making one object may
    // ask for another, and two threads that ask for the same one wait for a single construction.
    template <class T>
    T& Get() {
        Slot& slot = SlotOf(TypeIndex<T>());
        if (void* object = slot.object.load(std::memory_order_acquire)) return *static_cast<T*>(object);
        const std::lock_guard guard(slot.lock);
        if (void* object = slot.object.load(std::memory_order_relaxed)) return *static_cast<T*>(object);
        auto owner = std::make_unique<Holder<T>>();
        T& made = owner->value;
        Keep(std::move(owner), slot);
        slot.object.store(&made, std::memory_order_release);
        return made;
    }

    // Destroys all objects, newest first. No other thread may be inside Get.
    void Clear() noexcept;

  private:
    struct HolderBase {
        HolderBase() = default;
        HolderBase(const HolderBase&) = delete;
        HolderBase& operator=(const HolderBase&) = delete;
        virtual ~HolderBase() = default;
    };
    template <class T>
    struct Holder final : HolderBase {
        T value{};
    };
    struct Slot {
        std::atomic<void*> object{nullptr};
        Mutex lock;
    };
    struct Kept {
        std::unique_ptr<HolderBase> owner;
        Slot* slot;
    };

    // The types that live as long as the process are few and known when the module is built.
    static constexpr std::size_t kMaxTypes = 128;

    static std::size_t NextTypeIndex() noexcept;
    template <class T>
    static std::size_t TypeIndex() noexcept {
        static const std::size_t index = NextTypeIndex();
        return index;
    }

    Slot& SlotOf(std::size_t index) noexcept { return m_slots[index]; }
    void Keep(std::unique_ptr<HolderBase> owner, Slot& slot);

    std::array<Slot, kMaxTypes> m_slots;
    Mutex m_keptLock;
    std::vector<Kept> m_kept;  // guarded by m_keptLock; in order of construction
};

}  // namespace roundup
