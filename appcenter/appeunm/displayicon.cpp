#include "appcenter/appeunm/displayicon.h"

#include <limits>

namespace roundup {
namespace {

// Minus signs and blanks in front of the digits are dropped, so that -101 and 101 are one icon.
std::int32_t ParseIconIndex(std::u16string_view text) noexcept {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    const std::size_t start = text.find_first_not_of(u"- ");
    if (start == std::u16string_view::npos) return 0;
    std::int64_t index = 0;
    for (const char16_t c : text.substr(start)) {
        if (c < u'0' || c > u'9') break;
        index = index * 10 + (c - u'0');
        if (index > kLargest) return static_cast<std::int32_t>(kLargest);
    }
    return static_cast<std::int32_t>(index);
}

}  // namespace

DisplayIcon ParseDisplayIcon(std::u16string_view text) noexcept {
    std::u16string_view path = text;
    std::u16string_view tail;
    if (!text.empty() && text.front() == u'"') {
        path.remove_prefix(1);
        const std::size_t quote = path.find(u'"');
        if (quote != std::u16string_view::npos) {
            tail = path.substr(quote + 1);
            path = path.substr(0, quote);
        }
    }
    if (const std::size_t comma = tail.rfind(u','); comma != std::u16string_view::npos) {
        return {path, ParseIconIndex(tail.substr(comma + 1))};
    }
    if (const std::size_t comma = path.rfind(u','); comma != std::u16string_view::npos) {
        return {path.substr(0, comma), ParseIconIndex(path.substr(comma + 1))};
    }
    return {path, 0};
}

}  // namespace roundup
