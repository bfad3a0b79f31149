#include "platform/recorded/installer/tablelayout.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/recorded/installer/streamname.h"

namespace roundup {

namespace {

// Bits of the word that describes a column, and what its low byte is for a number of four bytes.
constexpr std::uint16_t kValid = 0x0100;
constexpr std::uint16_t kText = 0x0800;
constexpr std::uint16_t kNullable = 0x1000;
constexpr std::uint16_t kKey = 0x2000;
constexpr std::uint16_t kSizeMask = 0x00FF;
constexpr std::uint16_t kLongSize = 4;

constexpr std::uint32_t kShortZero = 0x8000;
constexpr std::uint32_t kLongZero = 0x80000000U;

// The platform allows 32.
constexpr std::size_t kMostColumns = 255;

// The tables that describe the others are not described themselves.
struct FixedColumn {
    const char16_t* table;
    const char16_t* name;
    std::uint16_t type;
};
constexpr FixedColumn kFixedColumns[] = {{u"_Tables", u"Name", kValid | kText | kKey | 64},
                                         {u"_Columns", u"Table", kValid | kText | kKey | 64},
                                         {u"_Columns", u"Number", kValid | kKey | 2},
                                         {u"_Columns", u"Name", kValid | kText | 64},
                                         {u"_Columns", u"Type", kValid | 2}};
enum ColumnsColumn : std::uint8_t { kTable, kNumber, kName, kType };

std::optional<TableLayout> FixedLayout(std::u16string_view table, std::uint32_t referenceSize) {
    TableLayout layout;
    layout.name = table;
    for (const FixedColumn& column : kFixedColumns) {
        if (table == column.table && !layout.Add(column.name, column.type, referenceSize)) return std::nullopt;
    }
    return layout.columns.empty() ? std::nullopt : std::optional(std::move(layout));
}

}  // namespace

bool TableLayout::Add(std::u16string columnName, std::uint16_t type, std::uint32_t referenceSize) {
    TableColumn column;
    column.name = std::move(columnName);
    column.key = (type & kKey) != 0;
    column.place = rowWidth;
    const std::uint16_t size = type & kSizeMask;
    if ((type & ~kNullable) == (kText | kValid)) {
        column.kind = ColumnKind::Stream;
        column.width = sizeof(std::uint16_t);
    } else if ((type & kText) != 0) {
        column.kind = ColumnKind::Text;
        column.width = referenceSize;
    } else if (size <= sizeof(std::uint16_t)) {
        column.kind = ColumnKind::Short;
        column.width = sizeof(std::uint16_t);
    } else if (size == kLongSize) {
        column.kind = ColumnKind::Long;
        column.width = sizeof(std::uint32_t);
    } else {
        return false;
    }
    rowWidth += column.width;
    columns.push_back(std::move(column));
    return true;
}

bool TableCells::Read(CompoundFile& file, const TableLayout& layout) {
    m_rows = 0;
    const CompoundFile::Entry* stream = file.Find(EncodeStreamName(layout.name, StreamKind::Table));
    if (stream == nullptr) return true;
    std::size_t size = 0;
    if (stream->size % layout.rowWidth != 0 || !file.ReadWhole(*stream, m_bytes, size)) return false;
    m_rows = static_cast<std::uint32_t>(size / layout.rowWidth);
    return true;
}

std::uint32_t TableCells::At(std::uint32_t row, const TableColumn& column) const noexcept {
    const std::byte* cell = m_bytes.get() + std::size_t{column.place} * m_rows + std::size_t{column.width} * row;
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < column.width; ++i) value |= std::to_integer<std::uint32_t>(cell[i]) << (8U * i);
    return value;
}

std::optional<std::int32_t> TableCells::IntegerAt(std::uint32_t row, const TableColumn& column) const noexcept {
    const std::uint32_t value = At(row, column);
    if (value == 0) return std::nullopt;
    return static_cast<std::int32_t>(value - (column.kind == ColumnKind::Long ? kLongZero : kShortZero));
}

bool TableCatalog::Read(CompoundFile& file, const StringPool& texts) {
    m_texts = &texts;
    m_layout = *FixedLayout(u"_Columns", texts.ReferenceSize());
    if (!m_columns.Read(file, m_layout)) return false;
    m_order.resize(m_columns.Rows());
    for (std::uint32_t i = 0; i < m_order.size(); ++i) m_order[i] = i;
    const auto placeOf = [this](std::uint32_t row) {
        return std::tuple(m_columns.At(row, m_layout.columns[kTable]), m_columns.At(row, m_layout.columns[kNumber]),
                          row);
    };
    std::sort(m_order.begin(), m_order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return placeOf(a) < placeOf(b); });
    return true;
}

std::optional<TableLayout> TableCatalog::Find(std::u16string_view table) const {
    if (auto fixed = FixedLayout(table, m_texts->ReferenceSize())) return fixed;
    std::uint32_t tried = 0;
    for (std::size_t i = 0; i < m_order.size(); ++i) {
        const std::uint32_t name = m_columns.At(m_order[i], m_layout.columns[kTable]);
        if (name == tried) continue;
        tried = name;
        if (m_texts->IsText(name, table)) return LayoutOf(table, i);
    }
    return std::nullopt;
}

std::optional<TableLayout> TableCatalog::LayoutOf(std::u16string_view table, std::size_t from) const {
    TableLayout layout;
    layout.name = table;
    const std::uint32_t name = m_columns.At(m_order[from], m_layout.columns[kTable]);
    for (std::size_t i = from; i < m_order.size(); ++i) {
        const std::uint32_t row = m_order[i];
        if (m_columns.At(row, m_layout.columns[kTable]) != name) break;
        const std::optional<std::int32_t> number = m_columns.IntegerAt(row, m_layout.columns[kNumber]);
        const std::optional<std::int32_t> type = m_columns.IntegerAt(row, m_layout.columns[kType]);
        if (!number || !type || layout.columns.size() == kMostColumns) return std::nullopt;
        if (*number != static_cast<std::int32_t>(layout.columns.size()) + 1) return std::nullopt;
        std::u16string column = m_texts->Page().Decode(m_texts->At(m_columns.At(row, m_layout.columns[kName])));
        if (column.empty()) return std::nullopt;
        if (!layout.Add(std::move(column), static_cast<std::uint16_t>(*type), m_texts->ReferenceSize())) {
            return std::nullopt;
        }
    }
    return layout;
}

}  // namespace roundup
