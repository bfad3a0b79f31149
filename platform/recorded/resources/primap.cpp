#include <utility>

#include "platform/recorded/resources/bytecursor.h"
#include "platform/recorded/resources/pritables.h"

namespace roundup {

namespace {

constexpr std::uint8_t kInMap = 0;
constexpr std::uint8_t kInDataItem = 1;

}  // namespace

std::optional<std::pair<std::uint32_t, std::uint32_t>> PriMap::Pairs::At(std::uint64_t index) const noexcept {
    const std::uint64_t narrowCount = narrow.Size() / 4;
    if (index < narrowCount) {
        return std::pair<std::uint32_t, std::uint32_t>(*narrow.At<std::uint16_t>(index * 4),
                                                       *narrow.At<std::uint16_t>(index * 4 + 2));
    }
    index -= narrowCount;
    if (index >= wide.Size() / 8) return std::nullopt;
    return std::pair(*wide.At<std::uint32_t>(index * 8), *wide.At<std::uint32_t>(index * 8 + 4));
}

bool PriMap::Open(ByteView section) {
    ByteCursor cursor(section);
    const auto environment = cursor.Take<std::uint16_t>();
    (void)cursor.Take<std::uint16_t>();
    m_schemaSection = cursor.Take<std::uint16_t>();
    const auto schemaReference = cursor.Take<std::uint16_t>();
    m_decisionSection = cursor.Take<std::uint16_t>();
    const auto types = cursor.Take<std::uint16_t>();
    const auto itemGroups = cursor.Take<std::uint16_t>();
    const auto groups = cursor.Take<std::uint16_t>();
    const auto infos = cursor.Take<std::uint32_t>();
    const auto candidates = cursor.Take<std::uint32_t>();
    const auto data = cursor.Take<std::uint32_t>();
    const auto largeTable = cursor.Take<std::uint32_t>();
    (void)cursor.TakeBytes(std::uint64_t{environment} + schemaReference);
    m_types = cursor.TakeBytes(std::uint64_t{types} * 8);
    m_itemGroups.narrow = cursor.TakeBytes(std::uint64_t{itemGroups} * 4);
    m_groups.narrow = cursor.TakeBytes(std::uint64_t{groups} * 4);
    m_infos.narrow = cursor.TakeBytes(std::uint64_t{infos} * 4);
    if (largeTable != 0) {
        ByteCursor large(cursor.TakeBytes(largeTable));
        const auto largeItemGroups = large.Take<std::uint32_t>();
        const auto largeGroups = large.Take<std::uint32_t>();
        const auto largeInfos = large.Take<std::uint32_t>();
        m_itemGroups.wide = large.TakeBytes(std::uint64_t{largeItemGroups} * 8);
        m_groups.wide = large.TakeBytes(std::uint64_t{largeGroups} * 8);
        m_infos.wide = large.TakeBytes(std::uint64_t{largeInfos} * 8);
        if (large.Failed()) return false;
    }
    m_candidates = cursor.TakeBytes(std::uint64_t{candidates} * 8);
    m_data = cursor.TakeBytes(data);
    return !cursor.Failed();
}

// Runs of items share a group of infos, one for each. A group's number behind the last group is that of a single info.
std::optional<PriItemInfo> PriMap::FindInfo(std::uint32_t item) const {
    for (std::uint64_t i = 0; i < m_itemGroups.Count(); ++i) {
        const auto [firstItem, number] = *m_itemGroups.At(i);
        const auto group =
            m_groups.At(number).value_or(std::pair(1U, static_cast<std::uint32_t>(number - m_groups.Count())));
        if (item < firstItem || item - firstItem >= group.first) continue;
        const auto info = m_infos.At(std::uint64_t{group.second} + (item - firstItem));
        return info ? std::optional(PriItemInfo{info->first, info->second}) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<PriCandidate> PriMap::Candidate(std::uint64_t index) const {
    const std::optional<ByteView> entry = m_candidates.Slice(index * 8, 8);
    if (!entry) return std::nullopt;
    const auto type = m_types.At<std::uint32_t>(std::uint64_t{*entry->At<std::uint8_t>(1)} * 8 + 4);
    if (!type) return std::nullopt;
    PriCandidate candidate;
    candidate.type = static_cast<PriValueType>(*type);
    const std::uint8_t form = *entry->At<std::uint8_t>(0);
    if (form == kInMap) {
        candidate.bytes = m_data.Slice(*entry->At<std::uint32_t>(4), *entry->At<std::uint16_t>(2));
        return candidate.bytes ? std::optional(candidate) : std::nullopt;
    }
    if (form != kInDataItem) return std::nullopt;
    candidate.sourceFile = *entry->At<std::uint16_t>(2);
    candidate.dataItem = *entry->At<std::uint16_t>(4);
    candidate.dataSection = *entry->At<std::uint16_t>(6);
    return candidate;
}

}  // namespace roundup
