#include "platform/recorded/recordedsecurity.h"

#include "platform/recorded/lastfailure.h"
#include "platform/recorded/winpath.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr Win32Error kErrorNoSuchAlias = 1376;  // ERROR_NO_SUCH_ALIAS: there is no such local group
constexpr std::u16string_view kMachineRoot = u"HKEY_LOCAL_MACHINE\\";
constexpr std::u16string_view kMachineName = u"MACHINE\\";  // what access lists call that root

}  // namespace

Win32Error RecordedSecurity::GetLocalGroups(std::vector<std::u16string>& groups) {
    groups.clear();
    for (const auto& [group, members] : m_settings.groups) groups.push_back(group);
    return kErrorSuccess;
}

Win32Error RecordedSecurity::GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) {
    members.clear();
    for (const auto& [name, its] : m_settings.groups) {
        if (!EqualsNoCase(name, group)) continue;
        members = its;
        return kErrorSuccess;
    }
    return kErrorNoSuchAlias;
}

void RecordedSecurity::FindAccounts(std::u16string_view name, std::vector<std::u16string>& accounts) const {
    for (const auto& [known, its] : m_settings.accounts) {
        if (EqualsNoCase(known, name)) accounts = its;
    }
}

Win32Error RecordedSecurity::GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) {
    accounts.clear();
    FileInfo info;
    if (const Win32Error error = m_files.GetInfo(path, info); error != kErrorSuccess) return error;
    WinPath parsed;
    if (ParsePath(path, parsed) == kErrorSuccess) FindAccounts(parsed.text, accounts);
    return kErrorSuccess;
}

Win32Error RecordedSecurity::GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) {
    accounts.clear();
    const std::u16string path = m_keyNames ? m_keyNames(key) : std::u16string();
    if (path.empty()) return kErrorInvalidHandle;
    if (path.starts_with(kMachineRoot)) {
        FindAccounts(std::u16string(kMachineName).append(path, kMachineRoot.size()), accounts);
    }
    return kErrorSuccess;
}

}  // namespace roundup
