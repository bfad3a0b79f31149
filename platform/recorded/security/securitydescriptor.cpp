#include "platform/recorded/security/securitydescriptor.h"

#include <algorithm>

#include "utility/formattext.h"

namespace roundup {

namespace {

constexpr std::uint64_t kNtAuthority = 5;
constexpr std::uint8_t kRevision = 1;  // of identifiers and of descriptors

// Places in a descriptor, and bits of its control word.
constexpr std::uint64_t kControl = 2;
constexpr std::uint64_t kListOffset = 16;
constexpr std::uint16_t kHasList = 0x0004;
constexpr std::uint16_t kSelfRelative = 0x8000;

// A list: revision, a byte of nothing, size in bytes, number of entries, two bytes of nothing, the entries.
constexpr std::uint64_t kListSize = 2;
constexpr std::uint64_t kListCount = 4;
constexpr std::uint64_t kListHeader = 8;

// An entry: kind, flags, size in bytes, access mask, in the simple kinds the identifier.
constexpr std::uint64_t kEntrySize = 2;
constexpr std::uint64_t kEntryHeader = 4;
constexpr std::uint64_t kEntrySid = 8;
constexpr std::uint8_t kSimpleKinds[] = {0, 1, 9, 10};  // allowed, denied, and both with a condition behind

}  // namespace

bool Sid::BeginsWith(std::span<const std::uint32_t> first) const noexcept {
    return authority == kNtAuthority && count >= first.size() && std::equal(first.begin(), first.end(), parts.begin());
}

std::u16string Sid::Text() const {
    constexpr std::uint64_t kLargestDecimal = 0xFFFFFFFF;
    std::u16string text = u"S-1-";
    if (authority <= kLargestDecimal) {
        text += FormatText(u"%u", static_cast<std::uint32_t>(authority));
    } else {
        text += FormatText(u"0x%04x%08x", static_cast<std::uint32_t>(authority >> 32),
                           static_cast<std::uint32_t>(authority));
    }
    for (std::size_t i = 0; i < count; ++i) text += FormatText(u"-%u", parts[i]);
    return text;
}

std::optional<Sid> ReadSid(const ByteView& bytes, std::uint64_t offset) {
    const auto revision = bytes.At<std::uint8_t>(offset);
    const auto count = bytes.At<std::uint8_t>(offset + 1);
    if (!revision || !count || *revision != kRevision || *count > Sid::kMostParts) return std::nullopt;
    Sid sid;
    sid.count = *count;
    if (!bytes.Holds(offset, sid.Size())) return std::nullopt;
    for (std::uint64_t i = 2; i < 8; ++i) sid.authority = sid.authority << 8 | *bytes.At<std::uint8_t>(offset + i);
    for (std::size_t i = 0; i < sid.count; ++i) sid.parts[i] = *bytes.At<std::uint32_t>(offset + 8 + i * 4);
    return sid;
}

std::vector<Sid> ReadAccessList(const ByteView& descriptor) {
    std::vector<Sid> sids;
    const auto control = descriptor.At<std::uint16_t>(kControl);
    const auto offset = descriptor.At<std::uint32_t>(kListOffset);
    if (!control || !offset || descriptor.At<std::uint8_t>(0) != kRevision) return sids;
    if ((*control & (kHasList | kSelfRelative)) != (kHasList | kSelfRelative) || *offset == 0) return sids;
    const auto size = descriptor.At<std::uint16_t>(std::uint64_t{*offset} + kListSize);
    const auto list = size ? descriptor.Slice(*offset, *size) : std::nullopt;
    const auto count = list ? list->At<std::uint16_t>(kListCount) : std::nullopt;
    if (!count) return sids;
    std::uint64_t at = kListHeader;
    for (std::uint16_t i = 0; i < *count; ++i) {
        const auto entrySize = list->At<std::uint16_t>(at + kEntrySize);
        if (!entrySize || *entrySize < kEntryHeader) break;
        const auto entry = list->Slice(at, *entrySize);
        if (!entry) break;
        if (std::ranges::count(kSimpleKinds, *entry->At<std::uint8_t>(0)) != 0) {
            if (const auto sid = ReadSid(*entry, kEntrySid)) sids.push_back(*sid);
        }
        at += *entrySize;
    }
    return sids;
}

}  // namespace roundup
