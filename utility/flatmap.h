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
//
// Who has many questions at once can have the memory that each will touch fetched before it is asked: the slot of a
// key's hash, and some questions later the entry that the slot leads to.
template <class Key, class Value, class Hash, class Equal>
class FlatMap {
  public:
    struct Entry {
        Key key;
        [[no_unique_address]] Value value;
    };
    static constexpr std::uint32_t kNone = UINT32_MAX;

    // Makes room for so many entries.
    void Reserve(std::size_t count) {
        m_entries.reserve(count);
        if (count * 2 > m_slots.size()) Grow(std::bit_ceil(count * 2 + 1));
    }
    // The value of a key, null when it is not there. Good until the next key is added.
    template <class Asked>
    const Value* Find(const Asked& key) const {
        const std::uint32_t place = PlaceOf(key, HashOf(key));
        return place != kNone ? &m_entries[place].value : nullptr;
    }
    template <class Asked>
    Value* Find(const Asked& key) {
        return const_cast<Value*>(std::as_const(*this).Find(key));
    }
    // The value of a key, made from what is given when it is not there, and whether it was made.
    std::pair<Value&, bool> TryAdd(const Key& key, Value value) {
        const auto [place, made] = Enter(key, HashOf(key), std::move(value));
        return {m_entries[place].value, made};
    }
    bool IsEmpty() const noexcept { return m_entries.empty(); }
    std::size_t Count() const noexcept { return m_entries.size(); }

    // The same with the hash that HashOf has answered, for the place of the entry in the order of coming, from 0; kNone
    // when it is not there.
    template <class Asked>
    std::uint32_t PlaceOf(const Asked& key, std::uint32_t hash) const {
        return m_entries.empty() ? kNone : m_slots[SlotOf(hash, key)].place - 1;
    }
    std::pair<std::uint32_t, bool> Enter(const Key& key, std::uint32_t hash, Value value) {
        if (m_entries.size() * 2 >= m_slots.size()) Grow(m_slots.size() * 2);
        Slot& slot = m_slots[SlotOf(hash, key)];
        if (slot.place != 0) return {slot.place - 1, false};
        m_entries.push_back({key, std::move(value)});
        slot = {static_cast<std::uint32_t>(m_entries.size()), hash};
        return {slot.place - 1, true};
    }
    const Entry& At(std::uint32_t place) const noexcept { return m_entries[place]; }
    // The key must equal the one that is there.
    void ReplaceKey(std::uint32_t place, const Key& equal) { m_entries[place].key = equal; }

    // Spreads the hash over all bits: not every hash has done that.
    template <class Asked>
    static std::uint32_t HashOf(const Asked& key) {
        return static_cast<std::uint32_t>((std::uint64_t{Hash{}(key)} * 0x9E3779B97F4A7C15U) >> 32);
    }
    void FetchSlot(std::uint32_t hash) const noexcept {
        if (!m_slots.empty()) __builtin_prefetch(&m_slots[hash & (m_slots.size() - 1)]);
    }
    void FetchEntry(std::uint32_t hash) const noexcept {
        if (const Entry* const entry = Likely(hash)) __builtin_prefetch(entry);
    }
    // The entry of the slot where a key of this hash is looked for first, when it may be that key's; null as a rule
    // when there is none.
    const Entry* Likely(std::uint32_t hash) const noexcept {
        if (m_slots.empty()) return nullptr;
        const Slot slot = m_slots[hash & (m_slots.size() - 1)];
        return slot.place != 0 && slot.hash == hash ? &m_entries[slot.place - 1] : nullptr;
    }

  private:
    struct Slot {
        std::uint32_t place = 0;  // from 1; 0 is free
        std::uint32_t hash = 0;   // of the key: so most other keys are never looked at, and growing asks none
    };

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
