// From the paths of an adapter file to paths of this machine.
#pragma once

#include <string_view>

#include "utility/result.h"
#include "utility/stringcontainers.h"

namespace roundup {

// Appends, for each text of the set, the path that it stands for when that exists: every placeholder in it replaced by
// word, its path token by the folder, and its masks expanded. Texts without a token, or whose folder is not known, are
// passed over. Nothing is replaced when placeholder or word is empty. Call inside an FsRedirectGuard. On want of memory
// the failure is GeneralFailure and expanded is empty.
ResultCode ExpandPlaceholderPaths(std::u16string_view placeholder, std::u16string_view word, const CStringSet& paths,
                                  CStringVec& expanded);

}  // namespace roundup
