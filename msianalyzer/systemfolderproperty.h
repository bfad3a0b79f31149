// The predefined folder properties of the installer, such as ProgramFilesFolder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "utility/result.h"

namespace roundup {

// 64 on a machine whose native architecture has 64 bits, else 32. Small code 0x18 when the machine does not tell.
ResultCode GetArchitectureBits(std::uint32_t& bits);

// The folder of the property of that name (exactly) on this machine, without a backslash at its end but for drives.
// Small code 3 for a name that is none, or none on this architecture (not logged); 0x18 when the machine has no such
// folder. perMachine: how the product is installed; false outside of a product. Any thread.
ResultCode ResolveSystemFolder(std::u16string_view name, std::u16string& path, bool perMachine);

}  // namespace roundup
