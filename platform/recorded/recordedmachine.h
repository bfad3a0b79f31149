// A machine that is not live, put together from its parts.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/machine.h"
#include "platform/recorded/environment.h"
#include "platform/recorded/filesource.h"
#include "platform/recorded/hostfs.h"
#include "platform/recorded/installer/recordedinstaller.h"
#include "platform/recorded/machinesettings.h"
#include "platform/recorded/recordedclosedlibraries.h"
#include "platform/recorded/recordedfiles.h"
#include "platform/recorded/recordedprocesses.h"
#include "platform/recorded/recordedprofile.h"
#include "platform/recorded/recordedsecurity.h"
#include "platform/recorded/recordedshell.h"
#include "platform/recorded/recordedsystem.h"
#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrystore.h"
#include "platform/recorded/security/offlineaccounts.h"
#include "platform/recorded/shellfolders.h"

namespace roundup {

struct MachineParts {
    MachineSettings settings;
    std::unique_ptr<RegistryStore> registry;
    std::unique_ptr<IFileSource> files;
    // Drive letters with the folder of the source that each shows. Without a drive C: the machine has an empty one.
    std::vector<std::pair<char16_t, std::u16string>> drives;
    // The real folders that are the temporary and the host folder; null: these folders are in memory.
    std::unique_ptr<HostFolder> tempFolder;
    std::unique_ptr<HostFolder> hostFolder;
    // File name of the host's program, without an ending.
    std::u16string programName = u"roundup";
    // The user's folder where the source knows it better than the registry does.
    std::u16string profile;
    // Environment variables that the registry keeps count.
    bool registryEnvironment = false;
    // Local groups and the names of accounts are those of the registry, not of the settings.
    bool registryAccounts = false;
    std::vector<std::u16string> deniedFiles;
    std::optional<std::uint64_t> writeLimit;
    TextSinks sinks;
};

// The folder of the machine in which the host's program is, with "Config" and "cache" below it.
inline constexpr std::u16string_view kHostFolderName = u"RoundupHost";

class RecordedMachine final : public Machine {
  public:
    explicit RecordedMachine(MachineParts parts);

    IRegistry& Registry() override { return m_registry; }
    IFileSystem& Files() override { return m_files; }
    RecordedFileSystem& RecordedFiles() noexcept { return m_files; }
    IProfile& Profile() override { return m_profile; }
    IShell& Shell() override { return m_shell; }
    IInstaller& Installer() override { return m_installer; }
    IProcesses& Processes() override { return m_processes; }
    ISecurity& Security() override { return m_security; }
    ISystem& System() override { return m_system; }
    IClosedLibraries& ClosedLibraries() override { return m_closedLibraries; }

  private:
    void SetUpDrives(const MachineParts& parts);
    void SetUpMapped(std::unique_ptr<HostFolder> folder, const std::u16string& path,
                     std::unique_ptr<MappedFolder>& mapped);
    void SetUpSpecialPaths(const MachineParts& parts);
    FileEntry* EntryAt(const std::u16string& path);

    // In the order in which each stands on those before it.
    const MachineSettings m_settings;
    const std::unique_ptr<RegistryStore> m_store;
    RecordedRegistry m_registry;
    Environment m_environment;
    const ShellFolders m_folders;
    const std::u16string m_hostFolder;
    const std::u16string m_hostExecutable;
    WriteBudget m_budget;
    std::unique_ptr<MappedFolder> m_mappedTemp;
    std::unique_ptr<MappedFolder> m_mappedHost;
    FileTree m_tree;
    RecordedFileSystem m_files;
    RecordedProfile m_profile;
    RecordedShell m_shell;
    RecordedInstaller m_installer;
    RecordedProcesses m_processes;
    const std::unique_ptr<OfflineAccounts> m_accounts;  // null: the settings say it all
    RecordedSecurity m_security;
    RecordedSystem m_system;
    RecordedClosedLibraries m_closedLibraries;
};

}  // namespace roundup
