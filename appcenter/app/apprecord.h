// The inner record of an application: what one application tells another, and the bridge, of itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "utility/guid.h"

namespace roundup {

// Size of a text in a record, terminator included; a longer text is cut to 259 characters.
inline constexpr std::size_t kRecordTextSize = 260;

// Bits of an application's flags. They reach the host and the stored records.
struct AppFlags {
    static constexpr std::uint64_t k64Bit = 0x1;
    static constexpr std::uint64_t kNotTopLevel = 0x2;
    static constexpr std::uint64_t kWindowsInstaller = 0x4;
    static constexpr std::uint64_t k32BitImages = 0x8;    // a 32-bit image was seen and no 64-bit one
    static constexpr std::uint64_t kStorePackage = 0x20;  // in the inner record of a store package alone
    static constexpr std::uint64_t kFramework = 0x40;     // in the inner record of a store package alone
    static constexpr std::uint64_t kCurrentUser = 0x100;  // the entry lives in HKEY_CURRENT_USER
    static constexpr std::uint64_t k64BitView = 0x200;    // the entry was read through the 64-bit view
};

// Never leaves the module. Texts are zero-terminated and empty where the application has none. Whoever
// makes a record clears it with {}: not every application fills every field.
struct AppRecordEx {
    Guid code;
    char16_t wzName[kRecordTextSize];
    char16_t wzKeyString[kRecordTextSize];
    char16_t wzType[kRecordTextSize];
    char16_t wzTypeDes[kRecordTextSize];
    std::uint64_t qwFlags;
    char16_t wzRealInstallLoc[kRecordTextSize];
    char16_t wzInstallLoc[kRecordTextSize];
    char16_t wzVersion[kRecordTextSize];
    std::uint32_t dwTag;
    char16_t wzOriginalInstallLoc[kRecordTextSize];
};
static_assert(std::is_trivially_copyable_v<AppRecordEx> && std::is_standard_layout_v<AppRecordEx>);

}  // namespace roundup
