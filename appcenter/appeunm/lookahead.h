// Memory that a walk over a long list will need soon.
#pragma once

#include <cstddef>

#include "appcenter/appeunm/reconcilelists.h"
#include "utility/ownedstring.h"

namespace roundup {

namespace lookahead_detail {
inline void FetchText(const OwnedString& text) noexcept { __builtin_prefetch(text.Get()); }
template <class T>
void FetchText(const T&) noexcept {}
}  // namespace lookahead_detail

// Asks for the given members of an application some places ahead, and for the texts of one that is nearer and whose
// members have come by then. A hundred thousand applications lie all over the memory, and a walk that waits for each
// costs a multiple of what it does; which is what makes the time for one grow with their number.
template <auto... kMembers>
void LookAhead(const CAppList& list, std::size_t at) noexcept {
    constexpr std::size_t kNear = 6;
    constexpr std::size_t kFar = 2 * kNear;
    if (at + kFar >= list.size()) return;
    if (const CApp* const far = list[at + kFar].Get()) (__builtin_prefetch(&(far->*kMembers)), ...);
    if (const CApp* const near = list[at + kNear].Get()) (lookahead_detail::FetchText(near->*kMembers), ...);
}

}  // namespace roundup
