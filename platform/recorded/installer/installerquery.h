// Queries of installer databases: the SELECT statement of one table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace roundup {

// One comparison of a column with what the query has written out.
struct QueryCondition {
    enum class Test : std::uint8_t { Equal, Unequal, Less, LessOrEqual, Greater, GreaterOrEqual };
    struct Null {};
    std::u16string column;
    Test test = Test::Equal;  // Equal or Unequal when the value is a text or null
    std::variant<Null, std::int32_t, std::u16string> value;
};

struct InstallerQuery {
    std::u16string table;
    std::vector<std::u16string> columns;  // none: all
    std::vector<QueryCondition> conditions;
};

// SELECT * or columns FROM one table, with WHERE and comparisons joined by AND where there are such (documented as
// "SQL Syntax" of Windows Installer). Names may stand in backticks and have the table's before a dot; keywords
// may be of either case. Nothing for any other statement: joins, an order of the rows and changes are not read here.
// Throws std::bad_alloc.
std::optional<InstallerQuery> ParseInstallerQuery(std::u16string_view text);

}  // namespace roundup
