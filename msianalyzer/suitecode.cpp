#include "msianalyzer/suitecode.h"

#include <algorithm>

#include "utility/casemap.h"
#include "utility/suitenames.h"

namespace roundup {

namespace {

// Codes of these suites end alike and have their meaning at fixed places, as their maker has published it:
//
//     {90110409-6000-11D3-8CFE-0150048383C9}   2003: the product in two digits
//     {90140000-0011-0000-0000-0000000FF1CE}   later: the version in two digits, the product in four
constexpr std::u16string_view kOldTail = u"-6000-11D3-8CFE-0150048383C9}";
constexpr std::u16string_view kNewTail = u"000000FF1CE}";
constexpr std::size_t kOldTailAt = 9;
constexpr std::size_t kNewTailAt = 26;
constexpr std::size_t kPairAt = 3;
constexpr std::size_t kProductAt = 10;

constexpr std::uint16_t kOld = 2003;
constexpr std::uint16_t kVersions[] = {12, 14, 15, 16};

// The products from first to last are of the suite.
struct Products {
    std::uint16_t version;
    std::uint8_t suite;
    std::uint16_t first;
    std::uint16_t last;
};
constexpr Products kProducts[] = {
    // clang-format off
    {kOld, 1, 0x11, 0x1C}, {kOld, 1, 0x1E, 0x1E}, {kOld, 1, 0x1F, 0x1F}, {kOld, 1, 0x23, 0x23},
    {kOld, 1, 0x24, 0x24}, {kOld, 1, 0x26, 0x26}, {kOld, 1, 0x2E, 0x2E}, {kOld, 1, 0x44, 0x44},
    {kOld, 1, 0x83, 0x83}, {kOld, 1, 0x92, 0x92}, {kOld, 1, 0x93, 0x93}, {kOld, 1, 0xA1, 0xA1},
    {kOld, 1, 0xA4, 0xA4}, {kOld, 1, 0xA5, 0xA5}, {kOld, 1, 0xAA, 0xAE}, {kOld, 1, 0xCA, 0xCA},
    {kOld, 1, 0xD0, 0xD0}, {kOld, 1, 0xDC, 0xDC}, {kOld, 1, 0xE0, 0xE0}, {kOld, 1, 0xE3, 0xE3},
    {kOld, 1, 0xF8, 0xF8}, {kOld, 1, 0xFD, 0xFD}, {kOld, 1, 0xFF, 0xFF}, {kOld, 11, 0x32, 0x32},
    {kOld, 11, 0x3A, 0x3A}, {kOld, 11, 0x3B, 0x3B}, {kOld, 6, 0x51, 0x51}, {kOld, 6, 0x52, 0x52},
    {kOld, 6, 0x53, 0x53}, {kOld, 6, 0x55, 0x55}, {kOld, 6, 0x5E, 0x5E}, {12, 2, 0x10, 0x1C},
    {12, 2, 0x20, 0x20}, {12, 2, 0x26, 0x26}, {12, 2, 0x2E, 0x2E}, {12, 2, 0x2F, 0x2F}, {12, 2, 0x30, 0x30},
    {12, 2, 0x31, 0x31}, {12, 2, 0x33, 0x33}, {12, 2, 0x35, 0x35}, {12, 2, 0x44, 0x44}, {12, 2, 0xA1, 0xA1},
    {12, 2, 0xA3, 0xA3}, {12, 2, 0xA7, 0xA7}, {12, 2, 0xA9, 0xA9}, {12, 2, 0xAF, 0xAF}, {12, 2, 0xB0, 0xB0},
    {12, 2, 0xB1, 0xB1}, {12, 2, 0xB2, 0xB2}, {12, 2, 0xBA, 0xBA}, {12, 2, 0xCA, 0xCA}, {12, 2, 0x10D7, 0x10D7},
    {12, 2, 0x110D, 0x110D}, {12, 2, 0x1122, 0x1122}, {12, 12, 0x3A, 0x3A}, {12, 12, 0x3B, 0x3B},
    {12, 7, 0x51, 0x51}, {12, 7, 0x52, 0x52}, {12, 7, 0x53, 0x53}, {14, 3, 0x11, 0x1C}, {14, 3, 0x1F, 0x1F},
    {14, 3, 0x2F, 0x2F}, {14, 3, 0x44, 0x44}, {14, 3, 0x7A, 0x7A}, {14, 3, 0x8B, 0x8B}, {14, 3, 0xA1, 0xA1},
    {14, 3, 0xAF, 0xAF}, {14, 3, 0xBA, 0xBA}, {14, 3, 0x11D, 0x11D}, {14, 3, 0x110D, 0x110D},
    {14, 13, 0x3A, 0x3A}, {14, 13, 0x3B, 0x3B}, {14, 13, 0x110F, 0x110F}, {14, 8, 0x52, 0x52},
    {14, 8, 0x57, 0x57}, {15, 4, 0x11, 0x1C}, {15, 4, 0x1F, 0x1F}, {15, 4, 0x2F, 0x2F}, {15, 4, 0x44, 0x44},
    {15, 4, 0xA1, 0xA1}, {15, 4, 0xBA, 0xBA}, {15, 4, 0x12B, 0x12B}, {15, 4, 0x110D, 0x110D},
    {15, 14, 0x3A, 0x3A}, {15, 14, 0x3B, 0x3B}, {15, 14, 0x110F, 0x110F}, {15, 9, 0x51, 0x51},
    {15, 9, 0x53, 0x53}, {15, 16, 0x7E, 0x7E}, {15, 16, 0x8C, 0x8C}, {15, 16, 0x8F, 0x8F}, {16, 5, 0x11, 0x11},
    {16, 5, 0x12, 0x12}, {16, 5, 0x15, 0x15}, {16, 5, 0x16, 0x16}, {16, 5, 0x18, 0x1B}, {16, 5, 0x1F, 0x1F},
    {16, 5, 0xA1, 0xA1}, {16, 5, 0xBA, 0xBA}, {16, 5, 0x12B, 0x12B}, {16, 5, 0x110D, 0x110D},
    {16, 15, 0x3A, 0x3A}, {16, 15, 0x3B, 0x3B}, {16, 10, 0x51, 0x51}, {16, 10, 0x53, 0x53}, {16, 17, 0xF, 0xF},
    {16, 17, 0x6F, 0x6F}, {16, 17, 0x7E, 0x7E}, {16, 17, 0x8C, 0x8C}, {16, 17, 0x8F, 0x8F},
    // clang-format on
};

// What the hexadecimal digits at the beginning say.
constexpr std::uint32_t HexOf(std::u16string_view text) noexcept {
    std::uint32_t number = 0;
    for (const char16_t c : text) {
        const std::uint32_t digit = c >= u'0' && c <= u'9'   ? c - u'0'
                                    : c >= u'A' && c <= u'F' ? c - u'A' + 10U
                                    : c >= u'a' && c <= u'f' ? c - u'a' + 10U
                                                             : 16U;
        if (digit == 16) break;
        number = number * 16 + digit;
    }
    return number;
}

constexpr std::uint16_t VersionOf(std::u16string_view pair) noexcept {
    for (const std::uint16_t version : kVersions) {
        if (pair[0] == u'0' + version / 10 && pair[1] == u'0' + version % 10) return version;
    }
    return 0;
}

std::uint32_t Find(std::uint16_t version, std::uint32_t product) noexcept {
    const auto found = std::find_if(std::begin(kProducts), std::end(kProducts), [&](const Products& row) {
        return row.version == version && product >= row.first && product <= row.last;
    });
    return found == std::end(kProducts) ? SuiteNumber::kNone : found->suite;
}

}  // namespace

std::uint32_t ClassifySuiteCode(std::u16string_view code) noexcept {
    if (code.size() > kOldTailAt && EqualsNoCase(code.substr(kOldTailAt), kOldTail)) {
        return Find(kOld, HexOf(code.substr(kPairAt, 2)));
    }
    if (code.size() <= kNewTailAt || !EqualsNoCase(code.substr(kNewTailAt), kNewTail)) return SuiteNumber::kNone;
    const std::uint16_t version = VersionOf(code.substr(kPairAt, 2));
    return version == 0 ? SuiteNumber::kNone : Find(version, HexOf(code.substr(kProductAt, 4)));
}

}  // namespace roundup
