// Installer databases of a machine that is not live: a reader of the file format, on every system. What it answers
// is what msi.dll answers.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/filesystem.h"
#include "platform/recorded/installer/installerquery.h"
#include "platform/recorded/installer/tablerows.h"

namespace roundup {

// A database, its views and its records may be used on different threads at the same time, each by one; they may be
// destroyed in any order, before the file system that the database came from.

// Columns count from 1; a column that is not there is like a null field.
class InstallerRecord {
  public:
    // columns: those of the rows that the record shows, in its order.
    InstallerRecord(std::shared_ptr<const TableRows> rows, std::shared_ptr<const std::vector<std::uint32_t>> columns,
                    std::uint32_t row) noexcept
        : m_rows(std::move(rows)), m_columns(std::move(columns)), m_row(row) {}

    // As GetString of IInstaller; the text of a number is decimal, that of a stream empty.
    Win32Error Text(std::uint32_t column, char16_t* buffer, std::uint32_t& length) const;
    // kNullInteger for a null field, a stream or a text that is no number.
    std::int32_t Integer(std::uint32_t column) const;
    // Bytes of a stream or a number, characters of a text; 0 for a stream that cannot be had.
    std::uint32_t DataSize(std::uint32_t column);
    // As ReadStream of IInstaller: error 87 for a column that is not there, 1804 for one that holds no stream, 30 for
    // bytes that cannot be read. Without a buffer the bytes that are left are told.
    Win32Error ReadStream(std::uint32_t column, void* buffer, std::uint32_t& size);

  private:
    struct OpenStream {
        CompoundStream stream;
        std::uint64_t position = 0;
    };
    TableField FieldAt(std::uint32_t column) const noexcept;
    OpenStream* StreamAt(std::uint32_t column);

    const std::shared_ptr<const TableRows> m_rows;
    const std::shared_ptr<const std::vector<std::uint32_t>> m_columns;
    const std::uint32_t m_row;
    std::map<std::uint32_t, OpenStream> m_streams;  // by column
};

class InstallerView {
  public:
    InstallerView(std::shared_ptr<const DatabaseParts> database, TableLayout layout, std::vector<std::uint32_t> columns,
                  std::vector<QueryCondition> conditions)
        : m_database(std::move(database)),
          m_layout(std::move(layout)),
          m_columns(std::make_shared<const std::vector<std::uint32_t>>(std::move(columns))),
          m_conditions(std::move(conditions)) {}

    // Starts at the first row. Error 1627 for a table whose rows cannot be read.
    Win32Error Execute();
    // Error 259 behind the last row, 1627 before Execute.
    Win32Error Fetch(std::shared_ptr<InstallerRecord>& record);

  private:
    bool IsAsked(std::uint32_t row) const;

    const std::shared_ptr<const DatabaseParts> m_database;
    const TableLayout m_layout;
    const std::shared_ptr<const std::vector<std::uint32_t>> m_columns;
    const std::vector<QueryCondition> m_conditions;
    std::shared_ptr<const TableRows> m_rows;
    std::uint32_t m_next = 0;
};

class InstallerDatabase {
  public:
    explicit InstallerDatabase(std::shared_ptr<const DatabaseParts> parts) noexcept : m_parts(std::move(parts)) {}
    // Error 1615 for a query that is none, or names a table or a column that is not there.
    Win32Error OpenView(std::u16string_view query, std::shared_ptr<InstallerView>& view) const;

  private:
    const std::shared_ptr<const DatabaseParts> m_parts;
};

// Databases and patches (.msi, .msp) are told by the class of the file's root. The file stays open as long as the
// database or anything opened from it is, and is read as far as it is asked for. Error 110 for a file that is absent
// or none of them. Throws std::bad_alloc.
Win32Error OpenInstallerDatabase(IFileSystem& files, const char16_t* path,
                                 std::shared_ptr<InstallerDatabase>& database);

}  // namespace roundup
