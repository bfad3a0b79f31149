// Groups and access lists of a machine that is not live: what its settings say, or its own registry and file system.
#pragma once

#include "platform/recorded/machinesettings.h"
#include "platform/recorded/recordedfiles.h"
#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/security/offlineaccounts.h"
#include "platform/security.h"

namespace roundup {

// With accounts the local groups are the registry's, and the access lists those that keys and files bear; without,
// both are what the settings name. A key or file that has no access list to show names nobody.
class RecordedSecurity final : public ISecurity {
  public:
    RecordedSecurity(const MachineSettings& settings, RecordedFileSystem& files, RecordedRegistry& registry,
                     OfflineAccounts* accounts)
        : m_settings(settings), m_files(files), m_registry(registry), m_accounts(accounts) {}

    Win32Error GetLocalGroups(std::vector<std::u16string>& groups) override;
    Win32Error GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) override;
    Win32Error GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) override;
    Win32Error GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) override;

  private:
    void FindAccounts(std::u16string_view name, std::vector<std::u16string>& accounts) const;
    void ResolveAccounts(std::span<const std::byte> descriptor, std::vector<std::u16string>& accounts) const;

    const MachineSettings& m_settings;
    RecordedFileSystem& m_files;
    RecordedRegistry& m_registry;
    OfflineAccounts* const m_accounts;
};

}  // namespace roundup
