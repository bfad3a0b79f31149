// The system's 64-bit checksum of paths and other bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace roundup {

// CRC-64 with the Jones polynomial, reflected: constant 0x95AC9329AC4BC9B5, start value
// all ones, no final inversion. A null pointer or a size of 0 gives all ones.
std::uint64_t PathChecksum(const void* bytes, std::size_t size) noexcept;

}  // namespace roundup
