// SHA-1 (FIPS 180-4), by which Windows makes identifiers of services from their names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace roundup {

// The five words of the hash, in order.
std::array<std::uint32_t, 5> Sha1(std::span<const std::byte> bytes);

}  // namespace roundup
