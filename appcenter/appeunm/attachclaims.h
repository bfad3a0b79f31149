// Reconciliation: who claims whom by code and by name, and what is no application of its own then.
#pragma once

#include <cstddef>
#include <vector>

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// For each application of a list, the position of the one that it has been attached to; kNoPosition for the others.
using ParentPositions = std::vector<std::size_t>;

// Attaches each application whose code another one claims, then each that names another one as its parent. All stay on
// the list, for SortMain to take the attached ones off it. Circles of claims are cut, see CutCircles.
ParentPositions AttachClaimed(const IContinue& goOn, CAppList& main);

// Takes off the list what has a parent, moves to hide what is not top-level, and drops what has nothing to point at.
void SortMain(const IContinue& goOn, CAppList& main, const ParentPositions& parents, CAppList& hide);

// Applications that hang below each other in a circle are owned by each other alone once their list has let go of
// them, and no way from a root leads there. One link of each circle is cut and logged, so that they can go.
void CutCircles(const CAppList& apps, const ParentPositions& parents);

// Erases, in the tree below each application, every link to an application that was met before, and logs it.
void BreakCycles(const IContinue& goOn, const CAppList& main);

}  // namespace roundup
