#include "platform/recorded/installer/tablerows.h"

#include <algorithm>
#include <utility>

#include "platform/recorded/installer/streamname.h"

namespace roundup {

namespace {

constexpr std::u16string_view kStreams = u"_Streams";

std::u16string NumberText(std::int32_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

class StoredRows final : public TableRows {
  public:
    StoredRows(std::shared_ptr<const DatabaseParts> database, TableLayout layout, TableCells cells) noexcept
        : m_database(std::move(database)), m_layout(std::move(layout)), m_cells(std::move(cells)) {}

    std::uint32_t Count() const noexcept override { return m_cells.Rows(); }
    TableField At(std::uint32_t row, std::uint32_t column) const noexcept override {
        const TableColumn& shape = m_layout.columns[column];
        TableField field;
        if (shape.kind == ColumnKind::Text) {
            field.poolText = m_database->texts.At(m_cells.At(row, shape));
            if (!field.poolText.empty()) field.kind = TableField::Kind::PoolText;
        } else if (shape.kind == ColumnKind::Stream) {
            if (m_cells.At(row, shape) != 0) field.kind = TableField::Kind::Stream;
        } else if (const std::optional<std::int32_t> number = m_cells.IntegerAt(row, shape)) {
            field.kind = TableField::Kind::Integer;
            field.number = *number;
        }
        return field;
    }
    // The name of a field's stream is the table's with the row's primary key behind it.
    bool OpenStream(std::uint32_t row, std::uint32_t /*column*/, CompoundStream& stream) const override {
        std::u16string name = m_layout.name;
        for (std::uint32_t i = 0; i < m_layout.columns.size(); ++i) {
            if (!m_layout.columns[i].key) continue;
            const TableField part = At(row, i);
            name.push_back(u'.');
            name += part.kind == TableField::Kind::Integer ? NumberText(part.number) : Page().Decode(part.poolText);
        }
        CompoundFile& file = *m_database->file;
        const CompoundFile::Entry* entry = file.Find(EncodeStreamName(name, StreamKind::Plain));
        return entry != nullptr && file.OpenStream(*entry, stream);
    }
    const CodePage& Page() const noexcept override { return m_database->texts.Page(); }

  private:
    const std::shared_ptr<const DatabaseParts> m_database;
    const TableLayout m_layout;
    const TableCells m_cells;
};

// "_Streams" is no table of the file: it shows the streams that are not the rows of tables, by name and content.
class StreamRows final : public TableRows {
  public:
    explicit StreamRows(std::shared_ptr<const DatabaseParts> database) : m_database(std::move(database)) {
        for (const CompoundFile::Entry& entry : m_database->file->Streams()) {
            StreamKind kind = StreamKind::Plain;
            std::u16string name = DecodeStreamName(entry.name, kind);
            if (kind == StreamKind::Plain) m_streams.emplace_back(std::move(name), &entry);
        }
        // Compound files list their entries by the length of their names first.
        std::stable_sort(m_streams.begin(), m_streams.end(),
                         [](const auto& a, const auto& b) { return a.second->name.size() < b.second->name.size(); });
    }
    std::uint32_t Count() const noexcept override { return static_cast<std::uint32_t>(m_streams.size()); }
    TableField At(std::uint32_t row, std::uint32_t column) const noexcept override {
        TableField field;
        field.kind = column == 0 ? TableField::Kind::Text : TableField::Kind::Stream;
        if (column == 0) field.text = m_streams[row].first;
        return field;
    }
    bool OpenStream(std::uint32_t row, std::uint32_t /*column*/, CompoundStream& stream) const override {
        return m_database->file->OpenStream(*m_streams[row].second, stream);
    }
    const CodePage& Page() const noexcept override { return m_database->texts.Page(); }

  private:
    const std::shared_ptr<const DatabaseParts> m_database;
    std::vector<std::pair<std::u16string, const CompoundFile::Entry*>> m_streams;
};

}  // namespace

bool TableRows::Open(std::shared_ptr<const DatabaseParts> database, const TableLayout& layout,
                     std::shared_ptr<const TableRows>& rows) {
    if (layout.name == kStreams) {
        rows = std::make_shared<StreamRows>(std::move(database));
        return true;
    }
    TableCells cells;
    if (!cells.Read(*database->file, layout)) return false;
    rows = std::make_shared<StoredRows>(std::move(database), layout, std::move(cells));
    return true;
}

std::optional<TableLayout> FindTableLayout(const DatabaseParts& database, std::u16string_view table) {
    if (table != kStreams) return database.tables.Find(table);
    TableLayout layout;
    layout.name = kStreams;
    layout.columns.resize(2);
    layout.columns[0].name = u"Name";
    layout.columns[0].key = true;
    layout.columns[1].name = u"Data";
    layout.columns[1].kind = ColumnKind::Stream;
    return layout;
}

}  // namespace roundup
