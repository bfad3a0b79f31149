// Hash table of positions in an array whose entries carry their hash: linear probing over a block in an arena.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

namespace roundup::position_index {

// Arrays of up to this many entries are searched one after the other.
inline constexpr std::uint32_t kLinearCapacity = 8;

// The table for an array of that capacity, a power of two, has twice as many slots; a slot holds a position plus 1.
constexpr std::uint32_t SlotCount(std::uint32_t capacity) noexcept { return capacity * 2; }

inline void Put(std::uint32_t* slots, std::uint32_t capacity, std::uint32_t hash, std::uint32_t position) noexcept {
    const std::uint32_t mask = SlotCount(capacity) - 1;
    std::uint32_t at = hash & mask;
    while (slots[at] != 0) at = (at + 1) & mask;
    slots[at] = position + 1;
}

template <class Entry>
void Rebuild(std::uint32_t* slots, std::uint32_t capacity, const Entry* entries, std::uint32_t count) noexcept {
    std::fill_n(slots, SlotCount(capacity), 0U);
    for (std::uint32_t i = 0; i < count; ++i) Put(slots, capacity, entries[i].hash, i);
}

// The position of the first entry of that hash for which matches is true. slots is null for a short array.
template <class Entry, class Matches>
std::optional<std::uint32_t> Find(const std::uint32_t* slots, std::uint32_t capacity, const Entry* entries,
                                  std::uint32_t count, std::uint32_t hash, Matches&& matches) noexcept {
    if (slots == nullptr) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (entries[i].hash == hash && matches(entries[i])) return i;
        }
        return std::nullopt;
    }
    const std::uint32_t mask = SlotCount(capacity) - 1;
    for (std::uint32_t at = hash & mask; slots[at] != 0; at = (at + 1) & mask) {
        const std::uint32_t position = slots[at] - 1;
        if (entries[position].hash == hash && matches(entries[position])) return position;
    }
    return std::nullopt;
}

// The slot that holds the position, which must be in the table under that hash.
inline std::uint32_t SlotOf(const std::uint32_t* slots, std::uint32_t capacity, std::uint32_t hash,
                            std::uint32_t position) noexcept {
    const std::uint32_t mask = SlotCount(capacity) - 1;
    std::uint32_t at = hash & mask;
    while (slots[at] != position + 1) at = (at + 1) & mask;
    return at;
}

// Takes a position out, and moves back those behind it that the gap would cut off from their first slot.
template <class Entry>
void Remove(std::uint32_t* slots, std::uint32_t capacity, const Entry* entries, std::uint32_t position) noexcept {
    const std::uint32_t mask = SlotCount(capacity) - 1;
    std::uint32_t gap = SlotOf(slots, capacity, entries[position].hash, position);
    for (std::uint32_t at = (gap + 1) & mask; slots[at] != 0; at = (at + 1) & mask) {
        const std::uint32_t first = entries[slots[at] - 1].hash & mask;
        if (((at - first) & mask) >= ((at - gap) & mask)) {
            slots[gap] = slots[at];
            gap = at;
        }
    }
    slots[gap] = 0;
}

}  // namespace roundup::position_index
