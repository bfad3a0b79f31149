#include "platform/recorded/resources/prifile.h"

#include <algorithm>
#include <cstring>

#include "platform/recorded/resources/bytecursor.h"
#include "platform/recorded/resources/pritables.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::string_view kMagic = "mrm_pri";  // one more character is the version
constexpr std::string_view kDescriptor = "[mrm_pridescex]";
constexpr std::string_view kSchema = "[mrm_hschema";
constexpr std::string_view kExtendedSchema = "[mrm_hschemaex]";
constexpr std::string_view kDecisions = "[mrm_decn_info]";
constexpr std::string_view kMap = "[mrm_res_map";
constexpr std::string_view kDataItems = "[mrm_dataitem]";

constexpr std::uint64_t kTableEntry = 32;
constexpr std::uint64_t kNameSize = 16;
constexpr std::uint64_t kSectionHeader = 32;
constexpr std::uint64_t kSectionFooter = 8;

std::string_view TextOf(ByteView bytes) { return {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()}; }

std::optional<std::u16string> DecodeValue(PriValueType type, ByteView bytes) {
    std::u16string text;
    switch (type) {
        case PriValueType::String:
        case PriValueType::Path:
            text.resize(bytes.Size() / 2);
            if (!text.empty()) std::memcpy(text.data(), bytes.Data(), text.size() * 2);
            break;
        case PriValueType::AsciiString:
        case PriValueType::AsciiPath:
        case PriValueType::Utf8String:
        case PriValueType::Utf8Path:
            text = FromUtf8(TextOf(bytes));
            break;
        default:
            return std::nullopt;
    }
    text.resize(std::min(text.size(), text.find(u'\0')));
    return text;
}

}  // namespace

bool PriFile::Open(ByteView bytes) {
    m_bytes = bytes;
    m_maps.clear();
    ByteCursor header(bytes);
    if (!TextOf(header.TakeBytes(8)).starts_with(kMagic)) return false;
    (void)header.TakeBytes(8);  // two words of unknown meaning, the file's size
    m_sectionTable = header.Take<std::uint32_t>();
    m_sectionStart = header.Take<std::uint32_t>();
    m_sections = header.Take<std::uint16_t>();
    if (header.Failed() || !m_bytes.Holds(m_sectionTable, m_sections * kTableEntry)) return false;
    for (std::uint32_t i = 0; i < m_sections; ++i) {
        const std::optional<ByteView> section = Section(i, kDescriptor);
        if (!section) continue;
        ByteCursor cursor(*section);
        (void)cursor.TakeBytes(3 * 2);  // flags, section of included files, 0
        const auto schemas = cursor.Take<std::uint16_t>();
        const auto decisions = cursor.Take<std::uint16_t>();
        const auto maps = cursor.Take<std::uint16_t>();
        const auto primary = cursor.Take<std::uint16_t>();
        (void)cursor.TakeBytes(3 * 2);  // referenced files, data items, 0
        (void)cursor.TakeBytes((std::uint64_t{schemas} + decisions) * 2);
        m_maps.push_back(primary);
        for (std::uint32_t map = 0; map < maps; ++map) m_maps.push_back(cursor.Take<std::uint16_t>());
        return !cursor.Failed();
    }
    return false;
}

std::optional<PriFile::Entry> PriFile::Section(std::uint32_t index) const {
    if (index >= m_sections) return std::nullopt;
    const std::uint64_t entry = m_sectionTable + index * kTableEntry;
    const std::uint64_t offset = std::uint64_t{m_sectionStart} + *m_bytes.At<std::uint32_t>(entry + 24);
    const std::uint64_t size = *m_bytes.At<std::uint32_t>(entry + 28);
    if (size < kSectionHeader + kSectionFooter || !m_bytes.Holds(offset, size)) return std::nullopt;
    return Entry{TextOf(*m_bytes.Slice(offset, kNameSize)),
                 *m_bytes.Slice(offset + kSectionHeader, size - kSectionHeader - kSectionFooter)};
}

std::optional<ByteView> PriFile::Section(std::uint32_t index, std::string_view name) const {
    const std::optional<Entry> entry = Section(index);
    return entry && entry->name.starts_with(name) ? std::optional(entry->content) : std::nullopt;
}

std::optional<std::u16string> PriFile::FindText(std::u16string_view path, std::u16string_view language) const {
    // The package's own map stands in the list once more; few files have a second one.
    constexpr std::size_t kMostMaps = 16;
    for (std::size_t i = 0; i < std::min(m_maps.size(), kMostMaps); ++i) {
        if (i != 0 && m_maps[i] == m_maps.front()) continue;
        if (auto text = FindInMap(m_maps[i], path, language)) return text;
    }
    return std::nullopt;
}

std::optional<std::u16string> PriFile::FindInMap(std::uint32_t section, std::u16string_view path,
                                                 std::u16string_view language) const {
    const std::optional<ByteView> content = Section(section, kMap);
    PriMap map;
    if (!content || !map.Open(*content)) return std::nullopt;
    const std::optional<ByteView> schema = Section(map.SchemaSection(), kSchema);
    const std::optional<ByteView> decisions = Section(map.DecisionSection(), kDecisions);
    if (!schema || !decisions) return std::nullopt;
    const bool extended = Section(map.SchemaSection(), kExtendedSchema).has_value();
    const std::optional<std::uint32_t> item = FindPriItem(*schema, extended, path);
    const std::optional<PriItemInfo> info = item ? map.FindInfo(*item) : std::nullopt;
    if (!info) return std::nullopt;
    for (const std::uint32_t place : RankPriCandidates(*decisions, info->decision, language)) {
        std::optional<PriCandidate> candidate = map.Candidate(std::uint64_t{info->firstCandidate} + place);
        if (!candidate || candidate->sourceFile != 0) continue;
        if (!candidate->bytes) candidate->bytes = DataItem(candidate->dataSection, candidate->dataItem);
        if (!candidate->bytes) continue;
        if (auto text = DecodeValue(candidate->type, *candidate->bytes)) return text;
    }
    return std::nullopt;
}

// Short items come first, with places and sizes of 16 bits, then the others, with 32.
std::optional<ByteView> PriFile::DataItem(std::uint32_t section, std::uint32_t index) const {
    const std::optional<ByteView> content = Section(section, kDataItems);
    if (!content) return std::nullopt;
    ByteCursor cursor(*content);
    (void)cursor.Take<std::uint32_t>();
    const auto strings = cursor.Take<std::uint16_t>();
    const auto blobs = cursor.Take<std::uint16_t>();
    (void)cursor.Take<std::uint32_t>();
    const ByteView shortItems = cursor.TakeBytes(std::uint64_t{strings} * 4);
    const ByteView longItems = cursor.TakeBytes(std::uint64_t{blobs} * 8);
    const ByteView data = cursor.Rest();
    if (index < strings) {
        const std::uint64_t at = std::uint64_t{index} * 4;
        return data.Slice(shortItems.At<std::uint16_t>(at).value_or(0),
                          shortItems.At<std::uint16_t>(at + 2).value_or(0));
    }
    const std::uint64_t at = std::uint64_t{index - strings} * 8;
    const auto offset = longItems.At<std::uint32_t>(at);
    return offset ? data.Slice(*offset, longItems.At<std::uint32_t>(at + 4).value_or(0)) : std::nullopt;
}

}  // namespace roundup
