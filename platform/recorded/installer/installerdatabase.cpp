#include "platform/recorded/installer/installerdatabase.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace roundup {

namespace {

// The classes of databases, patches and transforms, {000C1084-0000-0000-C000-000000000046} and its kin.
constexpr unsigned char kDatabaseClass = 0x84;
constexpr unsigned char kPatchClass = 0x86;
constexpr unsigned char kTransformClass = 0x82;

bool IsInstallerClass(const CompoundFile::ClassId& id) noexcept {
    constexpr unsigned char kinds[] = {kDatabaseClass, kPatchClass, kTransformClass};
    constexpr unsigned char rest[] = {0x10, 0x0C, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    const auto same = [](std::byte a, unsigned char b) { return std::to_integer<unsigned char>(a) == b; };
    return std::any_of(std::begin(kinds), std::end(kinds), [&](unsigned char kind) { return same(id[0], kind); }) &&
           std::equal(id.begin() + 1, id.end(), std::begin(rest), same);
}

constexpr std::uint32_t kNoColumn = UINT32_MAX;

std::uint32_t ColumnIndex(const TableLayout& layout, std::u16string_view name) noexcept {
    const auto found = std::find_if(layout.columns.begin(), layout.columns.end(),
                                    [name](const TableColumn& column) { return column.name == name; });
    return found == layout.columns.end() ? kNoColumn : static_cast<std::uint32_t>(found - layout.columns.begin());
}

// A column is compared with what it can hold.
bool IsSound(const QueryCondition& condition, const TableLayout& layout) noexcept {
    const std::uint32_t index = ColumnIndex(layout, condition.column);
    if (index == kNoColumn) return false;
    const ColumnKind kind = layout.columns[index].kind;
    if (std::holds_alternative<QueryCondition::Null>(condition.value)) return true;
    if (std::holds_alternative<std::u16string>(condition.value)) return kind == ColumnKind::Text;
    return kind == ColumnKind::Short || kind == ColumnKind::Long;
}

bool Compare(QueryCondition::Test test, std::int32_t field, std::int32_t value) noexcept {
    switch (test) {
        case QueryCondition::Test::Equal:
            return field == value;
        case QueryCondition::Test::Unequal:
            return field != value;
        case QueryCondition::Test::Less:
            return field < value;
        case QueryCondition::Test::LessOrEqual:
            return field <= value;
        case QueryCondition::Test::Greater:
            return field > value;
        case QueryCondition::Test::GreaterOrEqual:
            return field >= value;
    }
    return false;
}

}  // namespace

Win32Error InstallerView::Execute() {
    m_next = 0;
    return TableRows::Open(m_database, m_layout, m_rows) ? kErrorSuccess : kErrorFunctionFailed;
}

Win32Error InstallerView::Fetch(std::shared_ptr<InstallerRecord>& record) {
    if (m_rows == nullptr) return kErrorFunctionFailed;
    while (m_next < m_rows->Count() && !IsAsked(m_next)) ++m_next;
    if (m_next >= m_rows->Count()) return kErrorNoMoreItems;
    record = std::make_shared<InstallerRecord>(m_rows, m_columns, m_next++);
    return kErrorSuccess;
}

bool InstallerView::IsAsked(std::uint32_t row) const {
    return std::all_of(m_conditions.begin(), m_conditions.end(), [&](const QueryCondition& condition) {
        const TableField field = m_rows->At(row, ColumnIndex(m_layout, condition.column));
        const bool wantsEqual = condition.test == QueryCondition::Test::Equal;
        if (std::holds_alternative<QueryCondition::Null>(condition.value)) {
            return (field.kind == TableField::Kind::Null) == wantsEqual;
        }
        if (const std::int32_t* number = std::get_if<std::int32_t>(&condition.value)) {
            return field.kind == TableField::Kind::Integer && Compare(condition.test, field.number, *number);
        }
        const std::u16string& text = std::get<std::u16string>(condition.value);
        const bool equal =
            field.kind == TableField::Kind::Text ? field.text == text : m_rows->Page().Decode(field.poolText) == text;
        return equal == wantsEqual;
    });
}

Win32Error InstallerDatabase::OpenView(std::u16string_view query, std::shared_ptr<InstallerView>& view) const {
    std::optional<InstallerQuery> parsed = ParseInstallerQuery(query);
    if (!parsed) return kErrorBadQuerySyntax;
    std::optional<TableLayout> layout = FindTableLayout(*m_parts, parsed->table);
    if (!layout) return kErrorBadQuerySyntax;
    std::vector<std::uint32_t> columns(parsed->columns.empty() ? layout->columns.size() : 0);
    std::iota(columns.begin(), columns.end(), 0U);
    for (const std::u16string& name : parsed->columns) {
        columns.push_back(ColumnIndex(*layout, name));
        if (columns.back() == kNoColumn) return kErrorBadQuerySyntax;
    }
    const bool sound = std::all_of(parsed->conditions.begin(), parsed->conditions.end(),
                                   [&](const QueryCondition& condition) { return IsSound(condition, *layout); });
    if (!sound) return kErrorBadQuerySyntax;
    view =
        std::make_shared<InstallerView>(m_parts, *std::move(layout), std::move(columns), std::move(parsed->conditions));
    return kErrorSuccess;
}

Win32Error OpenInstallerDatabase(IFileSystem& files, const char16_t* path,
                                 std::shared_ptr<InstallerDatabase>& database) {
    database.reset();
    std::unique_ptr<DatabaseFile> file = DatabaseFile::Open(files, path);
    if (file == nullptr) return kErrorOpenFailed;
    auto parts = std::make_shared<DatabaseParts>();
    parts->file = CompoundFile::Open(std::move(file));
    if (parts->file == nullptr || !IsInstallerClass(parts->file->RootClass())) return kErrorOpenFailed;
    if (!parts->texts.Read(*parts->file) || !parts->tables.Read(*parts->file, parts->texts)) return kErrorOpenFailed;
    database = std::make_shared<InstallerDatabase>(std::move(parts));
    return kErrorSuccess;
}

}  // namespace roundup
