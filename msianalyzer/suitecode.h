// Suites of applications, told from product codes.
#pragma once

#include <cstdint>
#include <string_view>

namespace roundup {

// The suite number (utility/suitenames.h) of a product code in braces, letters of either case; 0 when it is of none.
std::uint32_t ClassifySuiteCode(std::u16string_view code) noexcept;

}  // namespace roundup
