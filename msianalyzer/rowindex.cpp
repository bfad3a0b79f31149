#include "msianalyzer/rowindex.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "utility/boundary.h"

namespace roundup {

namespace {

struct KeyLess {
    bool operator()(const RowIndex::Entry& a, const RowIndex::Entry& b) const noexcept { return a.key < b.key; }
    bool operator()(const RowIndex::Entry& a, std::u16string_view b) const noexcept { return a.key < b; }
    bool operator()(std::u16string_view a, const RowIndex::Entry& b) const noexcept { return a < b.key; }
};

// An entry with the first characters of its key that tell it from others, the first one highest.
struct Leading {
    std::uint64_t units;
    std::size_t position;
};
constexpr std::size_t kLeadingUnits = 4;

std::uint64_t LeadingUnits(std::u16string_view key, std::size_t from) noexcept {
    std::uint64_t units = 0;
    for (std::size_t i = from; i < from + kLeadingUnits; ++i) units = units << 16U | (i < key.size() ? key[i] : 0U);
    return units;
}

std::size_t CommonStart(const std::vector<RowIndex::Entry>& entries) noexcept {
    std::u16string_view start = entries.front().key;
    for (const RowIndex::Entry& entry : entries) {
        const auto end = std::mismatch(start.begin(), start.end(), entry.key.begin(), entry.key.end()).first;
        start = start.substr(0, static_cast<std::size_t>(end - start.begin()));
    }
    return start.size();
}

}  // namespace

void RowIndex::Add(std::u16string_view key, CTableRow* row) {
    // Neighbours often have one key; then they share its text, which makes them equal at a glance.
    if (!m_entries.empty()) {
        const int compared = key.compare(m_entries.back().key);
        if (compared == 0) key = m_entries.back().key;
        if (compared < 0) m_sorted = false;
    }
    m_entries.push_back({key, row});
}

void RowIndex::Clear() noexcept {
    m_entries.clear();
    m_sorted = true;
}

const std::vector<RowIndex::Entry>& RowIndex::Sorted() const noexcept {
    if (m_sorted) return m_entries;
    m_sorted = true;
    const auto sort = [this] { return SortByLeading(), true; };
    // Without memory for the faster way; this one needs none.
    const auto slow = [this] { return std::stable_sort(m_entries.begin(), m_entries.end(), KeyLess()), true; };
    (void)AtBoundary(sort, slow);
    return m_entries;
}

// Keys are made of a start that all have in common and a long hash or number. The few characters behind that start
// decide nearly every comparison, so they are compared as one number, and the texts only where these are equal.
void RowIndex::SortByLeading() const {
    const std::size_t start = CommonStart(m_entries);
    std::vector<Leading> order(m_entries.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = {LeadingUnits(m_entries[i].key, start), i};
    std::sort(order.begin(), order.end(), [this](const Leading& a, const Leading& b) {
        if (a.units != b.units) return a.units < b.units;
        const std::u16string_view first = m_entries[a.position].key;
        const std::u16string_view second = m_entries[b.position].key;
        if (first.data() == second.data()) return a.position < b.position;
        const int compared = first.compare(second);
        return compared != 0 ? compared < 0 : a.position < b.position;
    });
    std::vector<Entry> sorted;
    sorted.reserve(m_entries.size());
    for (const Leading& place : order) sorted.push_back(m_entries[place.position]);
    m_entries = std::move(sorted);
}

std::span<const RowIndex::Entry> RowIndex::Range(std::u16string_view key) const noexcept {
    const std::vector<Entry>& entries = Sorted();
    const auto range = std::equal_range(entries.begin(), entries.end(), key, KeyLess());
    return {range.first, range.second};
}

CTableRow* RowIndex::Find(std::u16string_view key) const noexcept {
    const std::span<const Entry> range = Range(key);
    return range.empty() ? nullptr : range.front().row;
}

}  // namespace roundup
