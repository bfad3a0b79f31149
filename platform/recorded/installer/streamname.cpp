#include "platform/recorded/installer/streamname.h"

namespace roundup {

namespace {

// The digits, the letters of both cases, "." and "_" have numbers of six bits in this order. A unit from 0x3800 holds
// two of them, the first in its low bits; one from 0x4800 a single one, 0x4840 leads the name of a table. Every other
// character stands for itself.
constexpr std::u16string_view kCharacters = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._";
constexpr std::uint32_t kPairs = 0x3800;
constexpr std::uint32_t kSingles = 0x4800;
constexpr char16_t kTableMark = 0x4840;

}  // namespace

std::u16string EncodeStreamName(std::u16string_view name, StreamKind kind) {
    std::u16string encoded;
    if (kind == StreamKind::Table) encoded.push_back(kTableMark);
    for (std::size_t i = 0; i < name.size(); ++i) {
        const std::size_t first = kCharacters.find(name[i]);
        if (first == std::u16string_view::npos) {
            encoded.push_back(name[i]);
            continue;
        }
        const std::size_t second = i + 1 < name.size() ? kCharacters.find(name[i + 1]) : std::u16string_view::npos;
        if (second == std::u16string_view::npos) {
            encoded.push_back(static_cast<char16_t>(kSingles + first));
        } else {
            encoded.push_back(static_cast<char16_t>(kPairs + first + (second << 6U)));
            ++i;
        }
    }
    return encoded;
}

std::u16string DecodeStreamName(std::u16string_view encoded, StreamKind& kind) {
    kind = !encoded.empty() && encoded[0] == kTableMark ? StreamKind::Table : StreamKind::Plain;
    if (kind == StreamKind::Table) encoded.remove_prefix(1);
    std::u16string name;
    for (const char16_t unit : encoded) {
        if (unit < kPairs || unit >= kTableMark) {
            name.push_back(unit);
        } else if (unit >= kSingles) {
            name.push_back(kCharacters[unit - kSingles]);
        } else {
            name.push_back(kCharacters[(unit - kPairs) & 0x3FU]);
            name.push_back(kCharacters[(unit - kPairs) >> 6U]);
        }
    }
    return name;
}

}  // namespace roundup
