// The shell's item lists, as far as they name files.
#pragma once

#include <string>

#include "utility/byteview.h"

namespace roundup {

// The path that a list leads to: a volume and the folders and the file below it. Empty when the list names something
// else, such as a printer, or an item on the way is not understood. Throws std::bad_alloc.
std::u16string PathOfIdList(ByteView list);

}  // namespace roundup
