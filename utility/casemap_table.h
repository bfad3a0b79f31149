// The generated tables behind casemap.h: a page number for every 64 units, and pages of what is added to a unit.
#pragma once

#include <cstddef>
#include <cstdint>

namespace roundup::casemap_detail {

inline constexpr std::size_t kPageSize = 64;

extern const std::uint8_t kUpperIndex[];
extern const std::uint16_t kUpperOffsets[];
extern const std::uint8_t kLowerIndex[];
extern const std::uint16_t kLowerOffsets[];

}  // namespace roundup::casemap_detail
