// Where the special folders of a machine that is not live are.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/recorded/environment.h"
#include "platform/recorded/machinesettings.h"
#include "platform/registry.h"

namespace roundup {

// Numbers are the CSIDL values of SHGetFolderPathW (shlobj_core.h). A folder is, in this order: what the settings
// say; what the registry says of it (User Shell Folders, Shell Folders, the folders of CurrentVersion, ProfileList);
// that of a default Windows installation. Read-only once made.
class ShellFolders {
  public:
    // Fills the environment too: the settings' variables, and those that follow from the folders where the settings
    // set none. profile is the user's folder where the source knows it better than the registry; empty otherwise.
    // With registryEnvironment the variables that the registry keeps for the system and the user count as well.
    ShellFolders(IRegistry& registry, const MachineSettings& settings, const std::u16string& profile,
                 bool registryEnvironment, Environment& environment);

    // Empty for a number without a folder.
    const std::u16string& Path(std::uint32_t number) const noexcept;
    const std::u16string& TempFolder() const noexcept { return m_temp; }

    struct Row;

  private:
    void SetRoots(const MachineSettings& settings, const std::u16string& profile);
    void AddRow(const Row& row, const MachineSettings& settings);
    void AddRegistryEnvironment();
    std::u16string RegistryPath(const Row& row) const;
    std::u16string Expanded(KeyHandle root, const char16_t* key, const char16_t* name) const;

    IRegistry& m_registry;
    Environment& m_environment;
    Environment m_roots;  // what the paths of a default installation begin with, apart from the machine's variables
    const bool m_is64Bit;
    std::array<std::u16string, 64> m_paths;
    std::u16string m_temp;
};

}  // namespace roundup
