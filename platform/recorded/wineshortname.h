// Short names as Wine has them: made from the long name alone whenever somebody asks, and kept nowhere.
#pragma once

#include <string>
#include <string_view>

namespace roundup {

// The 8.3 name of an entry of a folder; empty when the name is one itself.
std::u16string WineShortName(std::u16string_view name);

// Whether a name has the form of those that WineShortName makes: five characters of which the last is a tilde, three
// of the hash, perhaps an extension.
bool LooksLikeWineShortName(std::u16string_view name) noexcept;

}  // namespace roundup
