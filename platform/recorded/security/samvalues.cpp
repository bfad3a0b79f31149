#include "platform/recorded/security/samvalues.h"

namespace roundup {

namespace {

// Of a group's value: where its members are, counted from the end of the header, their bytes and their number.
constexpr std::uint64_t kHeader = 0x34;
constexpr std::uint64_t kMembersOffset = 0x28;
constexpr std::uint64_t kMembersSize = 0x2C;
constexpr std::uint64_t kMembersCount = 0x30;

constexpr std::uint32_t kMachineAuthority = 21;
constexpr std::uint8_t kDomainParts = 4;
constexpr std::uint64_t kDomainSidSize = 8 + 4 * kDomainParts;

}  // namespace

std::vector<Sid> ReadAliasMembers(const ByteView& value) {
    std::vector<Sid> sids;
    const auto offset = value.At<std::uint32_t>(kMembersOffset);
    const auto size = value.At<std::uint32_t>(kMembersSize);
    const auto count = value.At<std::uint32_t>(kMembersCount);
    if (!offset || !size || !count) return sids;
    const auto members = value.Slice(kHeader + *offset, *size);
    if (!members) return sids;
    // The bytes end the list before a number that is too large does.
    std::uint64_t at = 0;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto sid = ReadSid(*members, at);
        if (!sid) break;
        sids.push_back(*sid);
        at += sid->Size();
    }
    return sids;
}

std::optional<Sid> ReadDomainSid(const ByteView& value) {
    if (value.Size() < kDomainSidSize) return std::nullopt;
    const auto sid = ReadSid(value, value.Size() - kDomainSidSize);
    if (!sid || sid->count != kDomainParts || sid->parts[0] != kMachineAuthority) return std::nullopt;
    return sid;
}

}  // namespace roundup
