// A walk over the files of a folder.
#pragma once

#include <cstdint>
#include <string_view>

#include "utility/result.h"

namespace roundup {

struct FindFileItem {
    const char16_t* path = nullptr;  // full path, good during the call
    std::uint32_t attributes = 0;
    std::uint64_t size = 0;  // bytes
};
using FindFileCallback = ResultCode (*)(void* context, const FindFileItem& item);

// Hands every file of the folder that matches the mask to onFile, in the order of the platform. With recursive set,
// folders that match the mask, and whose names do not begin with ".", are walked with the mask "*.*"; junctions are
// never entered. A folder that is not there has no files. The folder may end in a backslash. A failure of onFile ends
// the walk and is the result. Small code 2 for an empty folder or mask, or a null onFile or context; 0x18 for other
// failures of the platform.
ResultCode FindFiles(std::u16string_view folder, FindFileCallback onFile, void* context, bool recursive,
                     std::u16string_view mask);

}  // namespace roundup
