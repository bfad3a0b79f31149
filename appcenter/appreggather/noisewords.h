// Words that tell nothing about whose a key or a folder is.
#pragma once

#include "utility/ownedstring.h"

namespace roundup {

// True for null and empty texts, for what is made of digits and "." alone, and for the words of a fixed list, whose
// letters A to Z compare ignoring case and all others exactly.
bool IsNoiseWord(TextOrNull text) noexcept;

}  // namespace roundup
