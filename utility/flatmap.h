// A hash table in three blocks of memory, for indexes that are filled once and asked often.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace roundup {

// The containers of the standard library allocate each entry, and a question that finds nothing visits a few of them.
// Here a slot has the place of an entry and half of its hash, so such a question touches one line of memory as a rule.
// Entries stay in the order in which they came and cannot be removed. At most 2^32 - 2 of them.
template <class Key, class Value, class Hash, class Equal>
class FlatMap {
  public:
    struct Entry {
        Key key;
        Value value;
    };

    // Makes room for so many entries.
    void Reserve(std::size_t count) {
        m_entries.reserve(count);
        if (count * 2 > m_slots.size()) Grow(std::bit_ceil(count * 2 + 1));
    }
    // The value of a key, null when it is not there. Good until the next key is added.
    template <class Asked>
    const Value* Find(const Asked& key) const {
        if (m_entries.empty()) return nullptr;
        const std::uint32_t hash = HashOf(key);
        const std::uint32_t place = m_slots[SlotOf(hash, key)].place;
        return place != 0 ? &m_entries[place - 1].value : nullptr;
    }
    template <class Asked>
    Value* Find(const Asked& key) {
        return const_cast<Value*>(std::as_const(*this).Find(key));
    }
    // The value of a key, made from what is given when it is not there, and whether it was made.
    std::pair<Value&, bool> TryAdd(const Key& key, Value value) {
        if (m_entries.size() * 2 >= m_slots.size()) Grow(m_slots.size() * 2);
        const std::uint32_t hash = HashOf(key);
        Slot& slot = m_slots[SlotOf(hash, key)];
        if (slot.place != 0) return {m_entries[slot.place - 1].value, false};
        m_entries.push_back({key, std::move(value)});
        slot = {static_cast<std::uint32_t>(m_entries.size()), hash};
        return {m_entries.back().value, true};
    }
    bool IsEmpty() const noexcept { return m_entries.empty(); }

  private:
    struct Slot {
        std::uint32_t place = 0;  // from 1; 0 is free
        std::uint32_t hash = 0;   // of the key: so most other keys are never looked at, and growing asks none
    };

    // Spreads the hash over all bits: not every hash has done that.
    template <class Asked>
    static std::uint32_t HashOf(const Asked& key) {
        return static_cast<std::uint32_t>((std::uint64_t{Hash{}(key)} * 0x9E3779B97F4A7C15U) >> 32);
    }

    // The slot of the key, or the free one where it belongs.
    template <class Asked>
    std::size_t SlotOf(std::uint32_t hash, const Asked& key) const {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
            const Slot slot = m_slots[at];
            if (slot.place == 0 || (slot.hash == hash && Equal{}(m_entries[slot.place - 1].key, key))) return at;
        }
    }

    void Grow(std::size_t count) {
        constexpr std::size_t kLeast = 64;
        std::vector<Slot> slots(std::max(count, kLeast));
        const std::size_t mask = slots.size() - 1;
        for (const Slot& slot : m_slots) {
            if (slot.place == 0) continue;
            std::size_t at = slot.hash & mask;
            while (slots[at].place != 0) at = (at + 1) & mask;
            slots[at] = slot;
        }
        m_slots = std::move(slots);
    }

    std::vector<Slot> m_slots;  // a power of two, at most half of them taken
    std::vector<Entry> m_entries;
};

}  // namespace roundup
