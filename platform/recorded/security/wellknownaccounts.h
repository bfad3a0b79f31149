// Accounts that every Windows has under the same identifier, with their English names.
#pragma once

#include <string_view>

#include "platform/recorded/security/securitydescriptor.h"

namespace roundup {

struct WellKnownAccount {
    std::uint8_t authority;
    std::uint8_t count;
    std::uint32_t first;
    std::uint32_t second;
    std::u16string_view domain;  // may be empty
    std::u16string_view name;
};

// Null when the identifier is none of them. Source: [MS-DTYP], 2.4.2.4.
const WellKnownAccount* FindWellKnownAccount(const Sid& sid) noexcept;

}  // namespace roundup
