// Guid: 16 bytes, and the four text forms that the registry and the installer's books use.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>

#include "utility/fixedtext.h"
#include "utility/ownedstring.h"

namespace roundup {

// The bytes stand in the memory order of a Windows GUID structure: first a little-endian 32-bit and two 16-bit words,
// then eight single bytes (guiddef.h).
struct Guid {
    alignas(4) std::array<std::uint8_t, 16> bytes{};

    bool IsNil() const noexcept { return *this == Guid{}; }
    friend bool operator==(const Guid& a, const Guid& b) noexcept { return a.Words() == b.Words(); }
    // The order of the bytes, as memcmp gives it.
    friend std::strong_ordering operator<=>(const Guid& a, const Guid& b) noexcept { return a.bytes <=> b.bytes; }
    std::array<std::uint32_t, 4> Words() const noexcept {
        std::array<std::uint32_t, 4> words;
        std::memcpy(words.data(), bytes.data(), sizeof words);
        return words;
    }
};
static_assert(sizeof(Guid) == 16);

// The numbers are those that callers pass on as integers.
enum class GuidForm : std::uint8_t {
    Braced = 0,       // "{00020D75-0000-0000-C000-000000000046}", 38 characters
    BracedShort = 1,  // the same without the dash in front of the last six bytes, 37 characters
    Memory = 2,       // the bytes in memory order as 32 digits
    Packed = 3,       // as Memory, the two digits of every byte swapped: the code of the installer's registry
};

// The value of a text that is whole in that form: its length, every brace, dash and digit (of either case) in place.
// Anything else, also null, gives nil.
Guid ParseGuid(TextOrNull text, GuidForm form) noexcept;

// The text in upper-case digits; null when memory is short.
OwnedString FormatGuid(const Guid& value, GuidForm form) noexcept;
// The same in place, for texts that are compared or looked up at once.
FixedText<39> GuidText(const Guid& value, GuidForm form) noexcept;

}  // namespace roundup

template <>
struct std::hash<roundup::Guid> {
    std::size_t operator()(const roundup::Guid& guid) const noexcept {
        const auto words = guid.Words();
        const std::uint64_t low = (std::uint64_t{words[1]} << 32) | words[0];
        const std::uint64_t high = (std::uint64_t{words[3]} << 32) | words[2];
        return std::hash<std::uint64_t>{}(low ^ (high * 0x9E3779B97F4A7C15U));
    }
};
