// The members of one family of applications name their common folder as their location.
#pragma once

#include <string>
#include <string_view>

namespace roundup {

class CApp;

// True when the application's name, location or key says that it belongs to the family.
bool IsFamilyMember(const CApp& app);

// Narrows the location of a member of the family, once for an application, to the folder below it that has the
// product's name and most of its version words; the real location follows. Nothing happens to an application without
// a location, to one that is named otherwise, and when no folder fits.
void FixFamilyLocation(CApp& app);

// The name of the folder below base, which has no backslash at its end, that fits a member of that display name best;
// empty when none does.
std::u16string FindFamilyFolder(std::u16string_view displayName, const std::u16string& base);

}  // namespace roundup
