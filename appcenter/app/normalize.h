// Bringing the paths of an application into one form.
#pragma once

#include "utility/ownedstring.h"

namespace roundup {

class CApp;

// Cleans a location, cuts it to its folder when a file stands there, expands it, and makes it null when it is a folder
// that no application has to itself: a drive root, the Windows folder, a system folder, a Program Files root. A path
// that does not exist is not cut. Nothing happens to an empty one.
void NormalizeLocation(OwnedString& location);

// NormalizeLocation on the install location and, when the application has one, the long form of its other paths.
void NormalizePaths(CApp& app);

}  // namespace roundup
