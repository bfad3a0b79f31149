// A hive is a header of 4096 bytes, "regf", and behind it blocks, "hbin", of a multiple of 4096 bytes each, which are
// divided into cells without gaps. A cell begins with its size, negative while it is used. Keys are cells that begin
// with "nk", values with "vk". All numbers are little-endian, offsets of cells count from the end of the header.
#include "platform/recorded/registry/hivecells.h"

#include <cstring>

#include "platform/recorded/registry/sourcetext.h"

namespace roundup {

namespace {

constexpr std::size_t kHeaderSize = 4096;
constexpr std::size_t kBlocksLength = 0x28;  // in the header: bytes of all blocks

constexpr std::size_t kBlockHeaderSize = 32;
constexpr std::size_t kBlockLength = 8;  // in the header of a block

constexpr std::size_t kKeyFlags = 6;
constexpr std::size_t kKeySecurity = 0x30;  // offset of the cell of the descriptor, which keys share
constexpr std::size_t kKeyNameLength = 0x4C;
constexpr std::size_t kKeyName = 0x50;
constexpr std::uint16_t kKeyIsLink = 0x10;
constexpr std::uint16_t kKeyNameIsOneByteEach = 0x20;

constexpr std::size_t kDescriptorSize = 0x14;
constexpr std::size_t kDescriptor = 0x18;

constexpr std::size_t kValueNameLength = 6;
constexpr std::size_t kValueFlags = 0x14;
constexpr std::size_t kValueName = 0x18;
constexpr std::uint16_t kValueNameIsOneByteEach = 0x1;

}  // namespace

std::uint16_t HiveCells::Word(std::size_t offset) const noexcept {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(m_file[offset]) |
                                      std::to_integer<unsigned>(m_file[offset + 1]) << 8);
}

std::uint32_t HiveCells::Dword(std::size_t offset) const noexcept {
    return Word(offset) | static_cast<std::uint32_t>(Word(offset + 2)) << 16;
}

bool HiveCells::HasMark(std::size_t offset, std::string_view mark) const noexcept {
    return Has(offset, mark.size()) && std::memcmp(m_file.data() + offset, mark.data(), mark.size()) == 0;
}

std::optional<HiveCells::Key> HiveCells::ReadKey(std::size_t cell) const {
    if (!Has(cell, kKeyName) || !HasMark(cell + 4, "nk")) return std::nullopt;
    const std::uint16_t flags = Word(cell + kKeyFlags);
    auto name =
        ReadName(cell + kKeyName, Word(cell + kKeyNameLength), (flags & kKeyNameIsOneByteEach) != 0, kLongestKeyName);
    if (!name || name->empty()) return std::nullopt;
    return Key{std::move(*name), (flags & kKeyIsLink) != 0};
}

std::optional<std::u16string> HiveCells::ReadValueName(std::size_t cell) const {
    if (!Has(cell, kValueName) || !HasMark(cell + 4, "vk")) return std::nullopt;
    return ReadName(cell + kValueName, Word(cell + kValueNameLength),
                    (Word(cell + kValueFlags) & kValueNameIsOneByteEach) != 0, kLongestValueName);
}

std::span<const std::byte> HiveCells::ReadSecurity(std::size_t cell) const {
    if (!Has(cell, kKeyName) || !HasMark(cell + 4, "nk")) return {};
    const std::size_t security = std::size_t{kHeaderSize} + Dword(cell + kKeySecurity);
    if (!Has(security, kDescriptor) || !HasMark(security + 4, "sk")) return {};
    const std::size_t size = Dword(security + kDescriptorSize);
    if (!Has(security + kDescriptor, size)) return {};
    return m_file.subspan(security + kDescriptor, size);
}

std::optional<std::u16string> HiveCells::ReadName(std::size_t offset, std::size_t bytes, bool oneByteEach,
                                                  std::size_t longest) const {
    const std::size_t length = oneByteEach ? bytes : bytes / sizeof(char16_t);
    if (!Has(offset, bytes) || length > longest) return std::nullopt;
    std::u16string name(length, u'\0');
    for (std::size_t i = 0; i < length; ++i) {
        name[i] = oneByteEach ? std::to_integer<unsigned char>(m_file[offset + i])
                              : static_cast<char16_t>(Word(offset + i * sizeof(char16_t)));
    }
    return name;
}

std::optional<HiveCells::Fault> HiveCells::FindFault() const {
    if (!HasMark(0, "regf")) return Fault{0, "is no registry hive"};
    if (!Has(0, kHeaderSize)) return Fault{m_file.size(), "a hive that ends inside of its header"};
    const std::size_t length = Dword(kBlocksLength);
    if (!Has(kHeaderSize, length)) return Fault{m_file.size(), "a hive that ends before its last block does"};
    if (length == 0) return Fault{kBlocksLength, "a hive without a block"};
    for (std::size_t block = kHeaderSize; block < kHeaderSize + length;) {
        if (!HasMark(block, "hbin") || !Has(block, kBlockHeaderSize))
            return Fault{block, "no block where one has to be"};
        const std::size_t size = Dword(block + kBlockLength);
        if (size == 0 || size % kHeaderSize != 0 || !Has(block, size)) {
            return Fault{block + kBlockLength, "a block of an impossible length"};
        }
        if (const auto fault = FindBlockFault(block + kBlockHeaderSize, block + size)) return fault;
        block += size;
    }
    return std::nullopt;
}

std::optional<HiveCells::Fault> HiveCells::FindBlockFault(std::size_t start, std::size_t end) const {
    for (std::size_t cell = start; cell < end;) {
        const auto stored = static_cast<std::int32_t>(Dword(cell));
        const std::size_t size = static_cast<std::size_t>(stored < 0 ? -std::int64_t{stored} : std::int64_t{stored});
        if (size < 4 || size % 4 != 0 || size > end - cell) return Fault{cell, "a cell of an impossible length"};
        cell += size;
    }
    return std::nullopt;
}

}  // namespace roundup
