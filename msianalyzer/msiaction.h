// The standard actions of an install sequence that leave something on a machine.
#pragma once

#include <cstdint>

namespace roundup {

// The numbers are the system's own.
enum class MsiAction : std::uint32_t {
    RegisterProduct = 1,
    ProcessComponents = 2,
    InstallFiles = 3,
    CreateShortcuts = 4,
    InstallServices = 5,
    WriteRegistryValues = 6,
    SelfRegModules = 7,
    RegisterClassInfo = 8,
    RegisterTypeLibraries = 9,
    RegisterExtensionInfo = 10,
    RegisterProgIdInfo = 11,
    RegisterMimeInfo = 12,
    WriteIniValues = 13,
    PublishComponents = 14,
    MsiPublishAssemblies = 15,
};

}  // namespace roundup
