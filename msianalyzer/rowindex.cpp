#include "msianalyzer/rowindex.h"

#include <algorithm>

namespace roundup {

namespace {

struct KeyLess {
    bool operator()(const RowIndex::Entry& a, const RowIndex::Entry& b) const noexcept { return a.key < b.key; }
    bool operator()(const RowIndex::Entry& a, std::u16string_view b) const noexcept { return a.key < b; }
    bool operator()(std::u16string_view a, const RowIndex::Entry& b) const noexcept { return a < b.key; }
};

}  // namespace

void RowIndex::Sort() {
    // Makers of packages often write rows in order.
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), KeyLess())) {
        std::stable_sort(m_entries.begin(), m_entries.end(), KeyLess());
    }
}

std::span<const RowIndex::Entry> RowIndex::Range(std::u16string_view key) const noexcept {
    const auto range = std::equal_range(m_entries.begin(), m_entries.end(), key, KeyLess());
    return {range.first, range.second};
}

CTableRow* RowIndex::Find(std::u16string_view key) const noexcept {
    const std::span<const Entry> range = Range(key);
    return range.empty() ? nullptr : range.front().row;
}

}  // namespace roundup
