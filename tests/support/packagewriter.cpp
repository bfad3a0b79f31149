#include "tests/support/packagewriter.h"

#include <algorithm>
#include <unordered_map>

#include "platform/recorded/installer/streamname.h"

namespace roundup {

namespace {

constexpr std::uint16_t kText = 0x0D00;  // a text that is valid, and of a length that does not matter
constexpr std::uint16_t kShort = 0x0502;
constexpr std::uint16_t kLong = 0x0104;
constexpr std::uint16_t kStream = 0x0900;
constexpr std::uint16_t kNullable = 0x1000;
constexpr std::uint16_t kKey = 0x2000;

void Put(std::string& target, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) target.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// The numbers of the texts in the order in which they are first asked for.
class Pool {
  public:
    std::uint32_t Number(const std::string& text) {
        if (text.empty()) return 0;
        const auto [place, isNew] = m_numbers.emplace(text, static_cast<std::uint32_t>(m_texts.size()) + 1);
        if (isNew) m_texts.push_back({&place->first, 0});
        ++m_texts[place->second - 1].uses;
        return place->second;
    }
    std::string Lengths(std::uint32_t codePage, bool wide) const {
        std::string lengths;
        Put(lengths, codePage | (wide ? 0x80000000U : 0U), 4);
        for (const auto& [text, uses] : m_texts) {
            const std::size_t length = text->size();
            if (length > 0xFFFF) Put(lengths, (length >> 16U) << 16U, 4);
            Put(lengths, length & 0xFFFFU, 2);
            Put(lengths, std::min<std::uint32_t>(uses, 0xFFFF), 2);
        }
        return lengths;
    }
    std::string Data() const {
        std::string data;
        for (const Text& text : m_texts) data += *text.text;
        return data;
    }

  private:
    struct Text {
        const std::string* text;
        std::uint32_t uses;
    };
    std::unordered_map<std::string, std::uint32_t> m_numbers;
    std::vector<Text> m_texts;
};

// A compound file under construction: every stream gets sectors in a row.
class CompoundWriter {
  public:
    CompoundWriter(bool wide, unsigned char rootClass) : m_sector(wide ? 4096 : 512), m_rootClass(rootClass) {}

    std::string Write(const std::map<std::u16string, std::string>& streams) {
        for (const auto& [name, bytes] : streams) {
            const bool mini = bytes.size() < 4096;
            m_entries.push_back({name, mini ? AddMini(bytes) : AddSectors(bytes), bytes.size()});
        }
        const std::uint32_t miniStart = AddSectors(m_mini);
        const std::size_t miniSize = m_mini.size();
        std::string miniFat;
        for (const std::uint32_t next : m_miniFat) Put(miniFat, next, 4);
        const std::size_t miniFatSectors = (miniFat.size() + m_sector - 1) / m_sector;
        const std::uint32_t miniFatStart = AddSectors(miniFat, '\xFF');
        const std::uint32_t directoryStart = AddSectors(Directory(miniStart, miniSize));
        return Finish(directoryStart, miniFatStart, miniFatSectors);
    }

  private:
    static constexpr std::uint32_t kEnd = 0xFFFFFFFEU;
    static constexpr std::uint32_t kNone = 0xFFFFFFFFU;
    struct Entry {
        std::u16string name;
        std::uint32_t start;
        std::uint64_t size;
        std::uint32_t left = kNone;
        std::uint32_t right = kNone;
    };

    static void Chain(std::vector<std::uint32_t>& table, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            table.push_back(i + 1 < count ? static_cast<std::uint32_t>(table.size()) + 1 : kEnd);
        }
    }
    std::uint32_t AddSectors(const std::string& bytes, char filling = 0) {
        if (bytes.empty()) return kEnd;
        const auto start = static_cast<std::uint32_t>(m_fat.size());
        const std::size_t count = (bytes.size() + m_sector - 1) / m_sector;
        Chain(m_fat, count);
        m_body += bytes;
        m_body.resize(m_fat.size() * m_sector, filling);
        return start;
    }
    std::uint32_t AddMini(const std::string& bytes) {
        if (bytes.empty()) return kEnd;
        const auto start = static_cast<std::uint32_t>(m_miniFat.size());
        Chain(m_miniFat, (bytes.size() + 63) / 64);
        m_mini += bytes;
        m_mini.resize(m_miniFat.size() * 64);
        return start;
    }
    // The entries are ordered by the length of their names, then by the names: a tree that is as flat as can be.
    std::uint32_t Tree(std::size_t from, std::size_t to) {
        if (from >= to) return kNone;
        const std::size_t middle = (from + to) / 2;
        m_entries[middle].left = Tree(from, middle);
        m_entries[middle].right = Tree(middle + 1, to);
        return static_cast<std::uint32_t>(middle) + 1;
    }
    std::string Directory(std::uint32_t miniStart, std::size_t miniSize) {
        std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
            return a.name.size() != b.name.size() ? a.name.size() < b.name.size() : a.name < b.name;
        });
        std::string directory;
        PutEntry(directory, {u"Root Entry", miniStart, miniSize}, 5, Tree(0, m_entries.size()));
        for (const Entry& entry : m_entries) PutEntry(directory, entry, 2, kNone);
        while (directory.size() % m_sector != 0) PutEntry(directory, {u"", 0, 0}, 0, kNone);
        return directory;
    }
    void PutEntry(std::string& directory, const Entry& entry, unsigned type, std::uint32_t child) const {
        const std::size_t start = directory.size();
        for (const char16_t unit : entry.name) Put(directory, unit, 2);
        directory.resize(start + 64);
        Put(directory, entry.name.empty() ? 0 : (entry.name.size() + 1) * 2, 2);
        Put(directory, type | 0x100U, 2);  // black
        Put(directory, entry.left, 4);
        Put(directory, entry.right, 4);
        Put(directory, child, 4);
        std::string id(16, '\0');
        if (type == 5) id = {static_cast<char>(m_rootClass), 0x10, 0x0C, 0, 0, 0, 0, 0, '\xC0', 0, 0, 0, 0, 0, 0, 0x46};
        directory += id;
        directory.resize(start + 116);
        Put(directory, entry.start, 4);
        Put(directory, entry.size, 8);
    }
    // The allocation table stands behind all else and is told by the header, with sectors of numbers for what the
    // header has no room for.
    std::string Finish(std::uint32_t directoryStart, std::uint32_t miniFatStart, std::size_t miniFatSectors) {
        const std::size_t each = m_sector / 4;
        std::size_t fatSectors = 0;
        std::size_t difSectors = 0;
        while (fatSectors * each < m_fat.size() + fatSectors + difSectors) {
            ++fatSectors;
            difSectors = fatSectors > 109 ? (fatSectors - 109 + each - 2) / (each - 1) : 0;
        }
        const auto first = static_cast<std::uint32_t>(m_fat.size());
        m_fat.insert(m_fat.end(), fatSectors, 0xFFFFFFFDU);
        m_fat.insert(m_fat.end(), difSectors, 0xFFFFFFFCU);
        m_fat.resize(fatSectors * each, kNone);
        std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
        header.resize(24);
        Put(header, 0x3E, 2);
        Put(header, m_sector == 512 ? 3 : 4, 2);
        Put(header, 0xFFFE, 2);
        Put(header, m_sector == 512 ? 9 : 12, 2);
        Put(header, 6, 2);
        header.resize(44);
        Put(header, fatSectors, 4);
        Put(header, directoryStart, 4);
        Put(header, 0, 4);
        Put(header, 4096, 4);
        Put(header, miniFatStart, 4);
        Put(header, miniFatSectors, 4);
        const std::uint32_t firstDif = first + static_cast<std::uint32_t>(fatSectors);
        Put(header, difSectors > 0 ? firstDif : kEnd, 4);
        Put(header, difSectors, 4);
        for (std::size_t i = 0; i < 109; ++i) Put(header, i < fatSectors ? first + i : kNone, 4);
        header.resize(m_sector);
        std::string fat;
        for (const std::uint32_t next : m_fat) Put(fat, next, 4);
        for (std::size_t i = 0, place = 109; i < difSectors; ++i) {
            for (std::size_t k = 0; k + 1 < each; ++k, ++place) Put(fat, place < fatSectors ? first + place : kNone, 4);
            Put(fat, i + 1 < difSectors ? firstDif + i + 1 : kEnd, 4);
        }
        return header + m_body + fat;
    }

    const std::size_t m_sector;
    const unsigned char m_rootClass;
    std::string m_body;
    std::vector<std::uint32_t> m_fat;
    std::string m_mini;
    std::vector<std::uint32_t> m_miniFat;
    std::vector<Entry> m_entries;
};

bool IsKind(std::uint16_t type, std::uint16_t kind) { return (type & ~(kKey | kNullable)) == kind; }

}  // namespace

std::string WriteCompoundFile(const std::map<std::u16string, std::string>& streams, bool wide,
                              unsigned char rootClass) {
    return CompoundWriter(wide, rootClass).Write(streams);
}

PackageWriter& PackageWriter::CodePage(std::uint32_t number) {
    m_codePage = number;
    return *this;
}

PackageWriter& PackageWriter::WideReferences() {
    m_wideReferences = true;
    return *this;
}

PackageWriter& PackageWriter::WideSectors() {
    m_wideSectors = true;
    return *this;
}

PackageWriter& PackageWriter::Table(std::string_view table, std::initializer_list<std::string_view> columns) {
    TableRows& added = m_tables.emplace_back();
    added.name = table;
    for (const std::string_view column : columns) {
        const std::size_t blank = column.find(' ');
        const std::string_view type = column.substr(blank + 1);
        std::uint16_t word = type[0] == 'v' ? kStream : type[0] != 'i' ? kText : type[1] == '4' ? kLong : kShort;
        word |= type.back() == '*' ? kKey : kNullable;
        added.columns.push_back({std::string(column.substr(0, blank)), word});
    }
    return *this;
}

PackageWriter& PackageWriter::Row(std::string_view table, std::vector<Cell> cells) {
    const auto found = std::find_if(m_tables.begin(), m_tables.end(), [&](auto& other) { return other.name == table; });
    found->rows.push_back(std::move(cells));
    return *this;
}

PackageWriter& PackageWriter::Stream(std::u16string_view name, std::string_view bytes, bool mark) {
    m_streams[EncodeStreamName(name, mark ? StreamKind::Table : StreamKind::Plain)] = bytes;
    return *this;
}

std::string PackageWriter::Write() const {
    std::map<std::u16string, std::string> streams;
    Pool pool;
    const std::size_t reference = m_wideReferences ? 3 : 2;
    const auto wideName = [](const std::string& name) { return std::u16string(name.begin(), name.end()); };
    const auto markedName = [&](const std::string& name) {
        return EncodeStreamName(wideName(name), StreamKind::Table);
    };
    std::string names;
    std::string columns[4];
    for (const TableRows& table : m_tables) {
        Put(names, pool.Number(table.name), reference);
        std::string cells;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            const Column& column = table.columns[i];
            Put(columns[0], pool.Number(table.name), reference);
            Put(columns[1], (i + 1) ^ 0x8000U, 2);
            Put(columns[2], pool.Number(column.name), reference);
            Put(columns[3], column.type ^ 0x8000U, 2);
            for (const std::vector<Cell>& row : table.rows) {
                const Cell& cell = row[i];
                const auto* number = std::get_if<std::int32_t>(&cell);
                const auto* text = std::get_if<std::string>(&cell);
                if (IsKind(column.type, kText)) {
                    Put(cells, text != nullptr ? pool.Number(*text) : 0, reference);
                } else if (IsKind(column.type, kLong)) {
                    Put(cells, number != nullptr ? static_cast<std::uint32_t>(*number) ^ 0x80000000U : 0, 4);
                } else if (IsKind(column.type, kShort)) {
                    Put(cells, number != nullptr ? static_cast<std::uint32_t>(*number) ^ 0x8000U : 0, 2);
                } else {
                    const auto* blob = std::get_if<Blob>(&cell);
                    Put(cells, blob != nullptr ? 1 : 0, 2);
                    if (blob == nullptr) continue;
                    std::string name = table.name;
                    for (std::size_t k = 0; k < table.columns.size(); ++k) {
                        if ((table.columns[k].type & kKey) == 0) continue;
                        const auto* key = std::get_if<std::string>(&row[k]);
                        name += "." + (key != nullptr ? *key : std::to_string(std::get<std::int32_t>(row[k])));
                    }
                    streams[EncodeStreamName(wideName(name), StreamKind::Plain)] = blob->bytes;
                }
            }
        }
        if (!table.rows.empty()) streams[markedName(table.name)] = cells;
    }
    streams[markedName("_Tables")] = names;
    streams[markedName("_Columns")] = columns[0] + columns[1] + columns[2] + columns[3];
    streams[markedName("_StringPool")] = pool.Lengths(m_codePage, m_wideReferences);
    streams[markedName("_StringData")] = pool.Data();
    for (const auto& [name, bytes] : m_streams) streams[name] = bytes;
    return WriteCompoundFile(streams, m_wideSectors);
}

}  // namespace roundup
