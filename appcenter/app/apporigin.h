// Where an application was found, and why it hangs below another one. Kept with the object for those who show the
// catalogue; in no record.
#pragma once

#include <cstdint>

namespace roundup {

// Bits, since records of several places become one application.
struct AppOrigin {
    static constexpr std::uint32_t kMachine32 = 0x1;   // Uninstall key of HKEY_LOCAL_MACHINE, 32-bit or only view
    static constexpr std::uint32_t kMachine64 = 0x2;   // the same, 64-bit view
    static constexpr std::uint32_t kUser32 = 0x4;      // Uninstall key of HKEY_CURRENT_USER, 32-bit or only view
    static constexpr std::uint32_t kUser64 = 0x8;      // the same, 64-bit view
    static constexpr std::uint32_t kInstaller = 0x10;  // books and cached packages of Windows Installer
};

enum class LinkReason : std::uint8_t {
    None,  // top level, or read back from a record
    Code,
    ParentName,
    Location,
    DependencyKey,
    Suite,
    Source,
    Runtime,
    Rule,
    SharedComponent,
    CompatibilityList,
};

}  // namespace roundup
