// Texts of the package repository that name a resource instead of saying something.
#pragma once

#include <string>

namespace roundup {

// The text itself, or, when it begins with "@", what the shell says that it names: at most 511 characters, empty when
// it names nothing. The calling thread is in an apartment.
std::u16string ResolveIndirect(std::u16string text);

}  // namespace roundup
