// The comparisons by which the catalogue finds one application among others.
#pragma once

#include <string_view>

namespace roundup {

class CApp;

// True when key and the application's key are set and equal, ignoring case, and their names are too, if both are set.
bool IsKeyAndNameMatch(std::u16string_view key, std::u16string_view name, const CApp& app) noexcept;

}  // namespace roundup
