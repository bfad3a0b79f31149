// Security identifiers and the access lists of security descriptors, read from foreign bytes.
//
// Source of the formats: [MS-DTYP], 2.4.2 (SID), 2.4.4 (ACE), 2.4.5 (ACL), 2.4.6 (SECURITY_DESCRIPTOR).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "utility/byteview.h"

namespace roundup {

struct Sid {
    static constexpr std::size_t kMostParts = 15;

    std::uint64_t authority = 0;  // 48 bits
    std::uint8_t count = 0;       // of parts
    std::array<std::uint32_t, kMostParts> parts{};

    // Bytes that it takes where it is stored.
    std::size_t Size() const noexcept { return 8 + std::size_t{count} * 4; }
    std::uint32_t Last() const noexcept { return count != 0 ? parts[count - 1] : 0; }
    // True when the authority is 5 (NT) and the parts begin with these.
    bool BeginsWith(std::span<const std::uint32_t> first) const noexcept;
    // "S-1-5-32-544".
    std::u16string Text() const;
    friend bool operator==(const Sid&, const Sid&) = default;
};

// The identifier at that offset; nothing when there is none, or one that reaches beyond the bytes.
std::optional<Sid> ReadSid(const ByteView& bytes, std::uint64_t offset);

// The identifiers in the discretionary access list of a self-relative descriptor, one for each entry of the four
// simple kinds, in order. Empty when there is no list; what is malformed ends it.
std::vector<Sid> ReadAccessList(const ByteView& descriptor);

}  // namespace roundup
