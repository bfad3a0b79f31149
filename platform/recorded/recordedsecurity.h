// Groups and access lists of a machine that is not live: what its settings say.
#pragma once

#include <functional>
#include <utility>

#include "platform/filesystem.h"
#include "platform/recorded/machinesettings.h"
#include "platform/security.h"

namespace roundup {

// The path of an open key with its root in full, as Windows keeps it on disk; empty when it is none.
using KeyNamer = std::function<std::u16string(KeyHandle)>;

// A file or key that the settings do not name has an access list in which nobody can be resolved.
class RecordedSecurity final : public ISecurity {
  public:
    RecordedSecurity(const MachineSettings& settings, IFileSystem& files, KeyNamer keyNames)
        : m_settings(settings), m_files(files), m_keyNames(std::move(keyNames)) {}

    Win32Error GetLocalGroups(std::vector<std::u16string>& groups) override;
    Win32Error GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) override;
    Win32Error GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) override;
    Win32Error GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) override;

  private:
    void FindAccounts(std::u16string_view name, std::vector<std::u16string>& accounts) const;

    const MachineSettings& m_settings;
    IFileSystem& m_files;
    const KeyNamer m_keyNames;
};

}  // namespace roundup
