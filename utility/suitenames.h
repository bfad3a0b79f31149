// Suites whose products belong together, by the number that a product code tells.
#pragma once

#include <cstdint>

namespace roundup {

// What an installer package says of the suite that it belongs to; 0 when it belongs to none. Families follow each
// other, each with its versions in order.
struct SuiteNumber {
    static constexpr std::uint32_t kNone = 0;
    static constexpr std::uint32_t kOffice2003 = 1;
    static constexpr std::uint32_t kVisio2003 = 6;
    static constexpr std::uint32_t kProject2003 = 11;
    static constexpr std::uint32_t kComponents2013 = 16;
    static constexpr std::uint32_t kComponents2016 = 17;
};

// Family and version, such as "OFFICE_2016", and the family alone; null for a number without a suite.
const char16_t* SuiteTypeDes(std::uint32_t number) noexcept;
const char16_t* SuiteType(std::uint32_t number) noexcept;

}  // namespace roundup
