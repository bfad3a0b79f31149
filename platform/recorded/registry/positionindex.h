// Finds positions in an array by the hashes of its entries: over a block in an arena, beside the array.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>

namespace roundup::position_index {

// Beside a short array stand the hashes of its entries, which fit in a cache line and are searched one after the other.
// Beside a longer one, whose capacity is a power of two, stands a hash table with linear probing of positions plus 1.
inline constexpr std::uint32_t kLinearCapacity = 16;

constexpr std::uint32_t SlotCount(std::uint32_t capacity) noexcept {
    return capacity <= kLinearCapacity ? capacity : capacity * 2;
}

// The capacity to grow to: small steps where most arrays stay, since there are very many of them.
constexpr std::uint32_t NextCapacity(std::uint32_t capacity) noexcept {
    return capacity < kLinearCapacity ? capacity + 4 : capacity * 2;
}

// The smallest capacity that holds so many entries.
constexpr std::uint32_t CapacityFor(std::uint32_t count) noexcept {
    return count <= kLinearCapacity ? (count + 3) / 4 * 4 : std::bit_ceil(count);
}

inline void Put(std::uint32_t* slots, std::uint32_t capacity, std::uint32_t hash, std::uint32_t position) noexcept {
    if (capacity <= kLinearCapacity) {
        slots[position] = hash;
        return;
    }
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

// The position of the first entry of that hash for which matches is true.
template <class Entry, class Matches>
std::optional<std::uint32_t> Find(const std::uint32_t* slots, std::uint32_t capacity, const Entry* entries,
                                  std::uint32_t count, std::uint32_t hash, Matches&& matches) noexcept {
    if (capacity <= kLinearCapacity) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (slots[i] == hash && matches(entries[i])) return i;
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

// Makes position the place of the last entry, which is about to be moved there, and its former place none.
template <class Entry>
void MoveLast(std::uint32_t* slots, std::uint32_t capacity, const Entry* entries, std::uint32_t position,
              std::uint32_t last) noexcept {
    if (capacity <= kLinearCapacity) {
        slots[position] = slots[last];
        return;
    }
    const std::uint32_t mask = SlotCount(capacity) - 1;
    const auto slotOf = [&](std::uint32_t wanted) {
        std::uint32_t at = entries[wanted].hash & mask;
        while (slots[at] != wanted + 1) at = (at + 1) & mask;
        return at;
    };
    std::uint32_t gap = slotOf(position);
    if (position != last) {
        const std::uint32_t lastSlot = slotOf(last);
        slots[lastSlot] = position + 1;
    }
    // Moves back those behind the gap that it would cut off from their first slot. The hash of what is now at position
    // is still that of the last entry.
    for (std::uint32_t at = (gap + 1) & mask; slots[at] != 0; at = (at + 1) & mask) {
        const std::uint32_t held = slots[at] - 1;
        const std::uint32_t first = entries[held == position ? last : held].hash & mask;
        if (((at - first) & mask) >= ((at - gap) & mask)) {
            slots[gap] = slots[at];
            gap = at;
        }
    }
    slots[gap] = 0;
}

}  // namespace roundup::position_index
