// How the analysis of a package hands on what it finds.
#pragma once

#include <cstdint>

#include "utility/result.h"

namespace roundup {

// What an item is. The numbers are stored: the items of data files become records of an application's store under
// the same number.
struct ItemType {
    static constexpr std::uint32_t kFile = 2;
    static constexpr std::uint32_t kFolder = 13;
    static constexpr std::uint32_t kRegistry = 4;
    static constexpr std::uint32_t kShortcut = 6;
    static constexpr std::uint32_t kService = 7;
    static constexpr std::uint32_t kSelfRegistration = 8;
    static constexpr std::uint32_t kProductRegistry = 9;     // per-user keys of the product
    static constexpr std::uint32_t kUninstallRegistry = 10;  // Uninstall keys
    static constexpr std::uint32_t kComponentRegistry = 11;  // per-user keys of components
    static constexpr std::uint32_t kPatchRegistry = 12;      // per-user keys of patches
    static constexpr std::uint32_t kIni = 14;
    static constexpr std::uint32_t kDriver = 15;
    static constexpr std::uint32_t kHelpNamespace = 16;
    static constexpr std::uint32_t kSideBySide = 17;  // registry records of side-by-side winners
};

// Files and folders: item is a path of the machine, value its size in bytes (0 for a folder). All other types: item
// is a temporary data file that has just been closed, value its size; the file is the receiver's from then on. Called
// on the thread of the analysis, which ignores the answer.
using ItemCallback = ResultCode (*)(void* context, const char16_t* item, std::uint64_t value, std::uint32_t type);

}  // namespace roundup
