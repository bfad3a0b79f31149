// What the columns of a table of an installer database are and how its rows are stored.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/installer/compoundfile.h"
#include "platform/recorded/installer/stringpool.h"

namespace roundup {

enum class ColumnKind : std::uint8_t { Text, Short, Long, Stream };

struct TableColumn {
    std::u16string name;
    ColumnKind kind = ColumnKind::Text;
    bool key = false;         // part of the primary key
    std::uint32_t width = 0;  // bytes of a cell
    std::uint32_t place = 0;  // bytes of a row's cells before this one
};

struct TableLayout {
    // type: the word that the database keeps for a column. False for a kind that there is none of.
    bool Add(std::u16string columnName, std::uint16_t type, std::uint32_t referenceSize);

    std::u16string name;
    std::vector<TableColumn> columns;
    std::uint32_t rowWidth = 0;
};

// The rows of a table as they lie in its stream: all cells of the first column, then all of the second, and so on.
class TableCells {
  public:
    // A table without a stream has no rows. False for a stream that cannot be read or does not hold whole rows.
    // Throws std::bad_alloc.
    bool Read(CompoundFile& file, const TableLayout& layout);
    std::uint32_t Rows() const noexcept { return m_rows; }
    // The number in the cell, 0 for null; row and column must be there.
    std::uint32_t At(std::uint32_t row, const TableColumn& column) const noexcept;
    // The same of a column of numbers, which are stored so that their 0 is another; nothing for null.
    std::optional<std::int32_t> IntegerAt(std::uint32_t row, const TableColumn& column) const noexcept;

  private:
    std::unique_ptr<std::byte[]> m_bytes;
    std::uint32_t m_rows = 0;
};

// The layouts of all tables, as the table "_Columns" tells them.
class TableCatalog {
  public:
    // False when that one cannot be read. texts must outlive the catalog. Throws std::bad_alloc.
    bool Read(CompoundFile& file, const StringPool& texts);
    // Nothing for a table that is not there, or whose columns are not all there, each once and of a known kind.
    // Upper and lower case differ. Throws std::bad_alloc.
    std::optional<TableLayout> Find(std::u16string_view table) const;

  private:
    std::optional<TableLayout> LayoutOf(std::u16string_view table, std::size_t from) const;

    const StringPool* m_texts = nullptr;
    TableLayout m_layout;
    TableCells m_columns;
    // The rows of "_Columns", those of one table side by side in the order of their numbers.
    std::vector<std::uint32_t> m_order;
};

}  // namespace roundup
