// The members of one family of applications name their common folder as their location.
#pragma once

namespace roundup {

class CApp;

// True when the application's name, location or key says that it belongs to the family.
bool IsFamilyMember(const CApp& app);

// Narrows the location of a member of the family, once for an application, to the folder below it that has the
// product's name and most of its version words; the real location follows. Nothing happens to an application without
// a location, to one that is named otherwise, and when no folder fits.
void FixFamilyLocation(CApp& app);

}  // namespace roundup
