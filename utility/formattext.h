// The one formatter: printf conversions over UTF-16, checked by type when the program is compiled.
//
// Understood: %% ; flags '-', '0', '#', '+', blank; width (also *) and precision (also *); %s wide text (char16_t
// pointer, view, OwnedString, FixedText; null prints as "(null)"), %S narrow text (const char*, UTF-8), %c a
// char16_t; %d %i %u %x %X with the sizes h, hh, l, ll, I64, I32 (l is 32 bits, as on Windows); %p. A format that
// does not fit its arguments does not compile.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "utility/fixedtext.h"
#include "utility/formattext_detail.h"
#include "utility/ownedstring.h"

namespace roundup {

// A literal that was checked against the types of its arguments.
template <class... Args>
using TextFormat = formattext_detail::Checked<std::type_identity_t<Args>...>;

// The whole text. Throws std::bad_alloc for want of memory and nothing else.
template <class... Args>
std::u16string FormatText(TextFormat<Args...> format, const Args&... args) {
    const formattext_detail::Argument list[] = {formattext_detail::Argument(args)..., formattext_detail::Argument()};
    return formattext_detail::ToString(format.Text(), list, sizeof...(Args));
}

// The cutting form: what does not fit the array is cut, never inside a surrogate pair. True when all of it fitted.
template <std::size_t N, class... Args>
bool FormatText(FixedText<N>& target, TextFormat<Args...> format, const Args&... args) noexcept {
    const formattext_detail::Argument list[] = {formattext_detail::Argument(args)..., formattext_detail::Argument()};
    return formattext_detail::ToArray(target.Data(), N, format.Text(), list, sizeof...(Args));
}

}  // namespace roundup
