// Writes installer databases for tests: compound files with the tables and streams that are asked for.
//
//     const std::string bytes = PackageWriter()
//         .Table("Property", {"Property s72*", "Value l0"})
//         .Row("Property", {"ProductName", "Tool"})
//         .Write();
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace roundup {

// The streams in the root of a compound file, with the class of a database. wide: sectors of 4096 bytes, else of 512.
// Names are written as they stand.
std::string WriteCompoundFile(const std::map<std::u16string, std::string>& streams, bool wide = false,
                              unsigned char rootClass = 0x84);

class PackageWriter {
  public:
    struct Blob {
        std::string bytes;
    };
    // Null, a number, a text in the database's code page, or the content of a stream.
    using Cell = std::variant<std::monostate, std::int32_t, std::string, Blob>;

    PackageWriter& CodePage(std::uint32_t number);
    PackageWriter& WideReferences();
    PackageWriter& WideSectors();
    // A column is its name and its type as exports of tables tell it: s or l for a text, i2, i4, v0 for a stream;
    // "*" behind it for a column of the primary key. The texts of the types are null or not as the rows have it.
    PackageWriter& Table(std::string_view table, std::initializer_list<std::string_view> columns);
    PackageWriter& Row(std::string_view table, std::vector<Cell> cells);
    // Any stream, by its name before encoding; with mark that of a table's rows, which replaces what would be there.
    PackageWriter& Stream(std::u16string_view name, std::string_view bytes, bool mark = false);
    std::string Write() const;

  private:
    struct Column {
        std::string name;
        std::uint16_t type;
    };
    struct TableRows {
        std::string name;
        std::vector<Column> columns;
        std::vector<std::vector<Cell>> rows;
    };

    std::uint32_t m_codePage = 0;
    bool m_wideReferences = false;
    bool m_wideSectors = false;
    std::vector<TableRows> m_tables;
    std::map<std::u16string, std::string> m_streams;
};

}  // namespace roundup
