// Rows of a table by a text: an ordered list with repeats, as a multimap is one, in one block of memory.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace roundup {

class CTableRow;

// Texts compare exactly, by character value; rows of one text keep the order in which they were added. Neither the
// rows nor the texts are owned. Filled by one thread; once sorted it may be read by many.
class RowIndex {
  public:
    struct Entry {
        std::u16string_view key;
        CTableRow* row = nullptr;
    };
    void Add(std::u16string_view key, CTableRow* row) { m_entries.push_back({key, row}); }
    // What was added since counts from then on.
    void Sort();
    void Clear() noexcept { m_entries.clear(); }

    std::size_t Size() const noexcept { return m_entries.size(); }
    bool IsEmpty() const noexcept { return m_entries.empty(); }
    auto begin() const noexcept { return m_entries.begin(); }
    auto end() const noexcept { return m_entries.end(); }
    // The rows of that text.
    std::span<const Entry> Range(std::u16string_view key) const noexcept;
    // The first of them, or null.
    CTableRow* Find(std::u16string_view key) const noexcept;

  private:
    std::vector<Entry> m_entries;
};

}  // namespace roundup
