// Compatibility lists: which applications belong below another one, and in which order.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

// From a component's key, ignoring case, to its position from 1.
using CompatibilityMap = std::map<OwnedString, std::uint32_t, CStringLess>;

// Reads "%s\Config\Compatibility\%s.ini" of the host's folder for the key, else for what stands before the key's first
// "-" less the blanks at its end. Section "component": "count", and the keys "1", "2" and so on with one component
// each. Without a count the list ends at the first number that is missing; numbers up to the count may be. An empty
// value is passed over, a component that is named twice keeps its first position, and reading ends with the highest
// number in the file. The map is left as it is when there is no file, or one above 0x100000 bytes. Throws
// std::bad_alloc for want of memory.
void LoadCompatibility(std::u16string_view key, CompatibilityMap& map);

}  // namespace roundup
