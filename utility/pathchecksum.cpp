#include "utility/pathchecksum.h"

#include <array>

namespace roundup {

namespace {

constexpr std::uint64_t kJonesReflected = 0x95AC9329AC4BC9B5U;
constexpr std::uint64_t kStart = 0xFFFFFFFFFFFFFFFFU;

constexpr std::array<std::uint64_t, 256> kTable = [] {
    std::array<std::uint64_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::uint64_t rest = byte;
        for (int bit = 0; bit < 8; ++bit) rest = (rest & 1) != 0 ? (rest >> 1) ^ kJonesReflected : rest >> 1;
        table[byte] = rest;
    }
    return table;
}();

}  // namespace

std::uint64_t PathChecksum(const void* bytes, std::size_t size) noexcept {
    std::uint64_t checksum = kStart;
    if (bytes == nullptr) return checksum;
    const auto* data = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < size; ++i)
        checksum = kTable[static_cast<std::uint8_t>(checksum ^ data[i])] ^ (checksum >> 8);
    return checksum;
}

}  // namespace roundup
