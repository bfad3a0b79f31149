// Rows of a table by a text: an ordered list with repeats, as a multimap is one, in one block of memory.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace roundup {

class CTableRow;

// Texts compare exactly, by character value; rows of one text keep the order in which they were added. Neither the
// rows nor the texts are owned. Used by one thread: the list is sorted when it is first read after something was
// added, so that an index that nobody reads costs next to nothing.
class RowIndex {
  public:
    struct Entry {
        std::u16string_view key;
        CTableRow* row = nullptr;
    };
    void Add(std::u16string_view key, CTableRow* row);
    void Clear() noexcept;

    std::size_t Size() const noexcept { return m_entries.size(); }
    bool IsEmpty() const noexcept { return m_entries.empty(); }
    auto begin() const noexcept { return Sorted().begin(); }
    auto end() const noexcept { return Sorted().end(); }
    // The rows of that text.
    std::span<const Entry> Range(std::u16string_view key) const noexcept;
    // The first of them, or null.
    CTableRow* Find(std::u16string_view key) const noexcept;

  private:
    const std::vector<Entry>& Sorted() const noexcept;
    void SortByLeading() const;

    mutable std::vector<Entry> m_entries;
    mutable bool m_sorted = true;
};

}  // namespace roundup
