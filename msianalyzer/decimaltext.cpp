#include "msianalyzer/decimaltext.h"

#include <limits>

namespace roundup {

std::int64_t DecimalOf(std::u16string_view text) noexcept {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    while (!text.empty() && (text.front() == u' ' || (text.front() >= u'\t' && text.front() <= u'\r'))) {
        text.remove_prefix(1);
    }
    const bool negative = !text.empty() && text.front() == u'-';
    if (negative || (!text.empty() && text.front() == u'+')) text.remove_prefix(1);
    const std::uint64_t limit = negative ? kMost + 1 : kMost;
    std::uint64_t number = 0;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9') break;
        const std::uint64_t digit = c - u'0';
        number = number > (limit - digit) / 10 ? limit : number * 10 + digit;
    }
    return negative ? static_cast<std::int64_t>(0 - number) : static_cast<std::int64_t>(number);
}

}  // namespace roundup
