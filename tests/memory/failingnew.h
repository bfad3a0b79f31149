// An operator new that fails when it is told to.
#pragma once

namespace roundup {

// Lets the allocation fail that comes behind so many others, on whatever thread; none but that one.
void FailAllocation(long behind) noexcept;
// Lets no allocation fail from now on; true when one has.
bool StopFailing() noexcept;

}  // namespace roundup
