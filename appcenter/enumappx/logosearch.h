// Finds the file of a logo that a manifest names by a path that is not there as it stands: logos come in several
// scales, each with its qualifiers in the file name.
#pragma once

#include <string>
#include <string_view>

namespace roundup {

// Searches the folder of path, then the plain folders in it, for a name that begins with the stem of the wanted one, or
// else with "Square150x150Logo", and does not contain "white". Empty when there is none.
std::u16string FindLogoFile(std::u16string_view path);

}  // namespace roundup
