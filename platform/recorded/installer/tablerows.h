// The rows that a query on an installer database walks: those of a table, or the streams of the file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/installer/compoundfile.h"
#include "platform/recorded/installer/stringpool.h"
#include "platform/recorded/installer/tablelayout.h"

namespace roundup {

// What an open database is, shared by all that was opened from it. Set once when it is opened.
struct DatabaseParts {
    std::shared_ptr<CompoundFile> file;
    StringPool texts;
    TableCatalog tables;
};

// What a row has in a column. Texts live as long as the rows.
struct TableField {
    enum class Kind : std::uint8_t { Null, Integer, PoolText, Text, Stream };
    Kind kind = Kind::Null;
    std::int32_t number = 0;
    std::string_view poolText;  // in the database's code page
    std::u16string_view text;
};

// Rows and columns are counted from 0 and must be there. Never changes; every thread may call.
class TableRows {
  public:
    // False for a table whose rows cannot be read. Throws std::bad_alloc.
    static bool Open(std::shared_ptr<const DatabaseParts> database, const TableLayout& layout,
                     std::shared_ptr<const TableRows>& rows);

    TableRows() = default;
    TableRows(const TableRows&) = delete;
    TableRows& operator=(const TableRows&) = delete;
    virtual ~TableRows() = default;
    virtual std::uint32_t Count() const noexcept = 0;
    virtual TableField At(std::uint32_t row, std::uint32_t column) const noexcept = 0;
    // False when the file has no readable stream for that field.
    virtual bool OpenStream(std::uint32_t row, std::uint32_t column, CompoundStream& stream) const = 0;
    virtual const CodePage& Page() const noexcept = 0;
};

// The layout of a table of the database, or of the list of its streams, "_Streams".
std::optional<TableLayout> FindTableLayout(const DatabaseParts& database, std::u16string_view table);

}  // namespace roundup
