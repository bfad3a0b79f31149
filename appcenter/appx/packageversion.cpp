#include "appcenter/appx/packageversion.h"

#include <algorithm>
#include <limits>

namespace roundup {
namespace {

// Takes the digits at the front off the text; false when there are none. A number that is too large is the largest.
bool TakeNumber(std::u16string_view& text, std::uint64_t& number) noexcept {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    std::size_t digits = 0;
    number = 0;
    for (; digits < text.size() && text[digits] >= u'0' && text[digits] <= u'9'; ++digits) {
        const auto digit = static_cast<std::uint64_t>(text[digits] - u'0');
        number = number > (kLargest - digit) / 10 ? kLargest : number * 10 + digit;
    }
    text.remove_prefix(digits);
    return digits > 0;
}

}  // namespace

std::uint64_t PackVersion(std::u16string_view text) noexcept {
    if (std::ranges::count(text, u'.') != 3) return 0;
    std::uint64_t packed = 0;
    for (int shift = 48; shift >= 0; shift -= 16) {
        std::uint64_t number = 0;
        if (!TakeNumber(text, number)) break;
        packed |= number << shift;
        if (!text.starts_with(u'.')) break;
        text.remove_prefix(1);
    }
    return packed;
}

}  // namespace roundup
