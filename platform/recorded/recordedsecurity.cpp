#include "platform/recorded/recordedsecurity.h"

#include <new>

#include "platform/recorded/winpath.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr Win32Error kErrorNoSuchAlias = 1376;  // ERROR_NO_SUCH_ALIAS: there is no such local group
constexpr std::u16string_view kMachineRoot = u"HKEY_LOCAL_MACHINE\\";
constexpr std::u16string_view kMachineName = u"MACHINE\\";  // what access lists call that root

// The boundary at which want of memory becomes an error number.
template <class Operation>
Win32Error Guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return kErrorNotEnoughMemory;
    }
}

}  // namespace

Win32Error RecordedSecurity::GetLocalGroups(std::vector<std::u16string>& groups) {
    groups.clear();
    return Guarded([&]() -> Win32Error {
        if (m_accounts != nullptr) groups = m_accounts->Groups();
        for (const auto& [group, members] : m_settings.groups) groups.push_back(group);
        return kErrorSuccess;
    });
}

Win32Error RecordedSecurity::GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) {
    members.clear();
    return Guarded([&]() -> Win32Error {
        for (const auto& [name, its] : m_settings.groups) {
            if (!EqualsNoCase(name, group)) continue;
            members = its;
            return kErrorSuccess;
        }
        return m_accounts != nullptr && m_accounts->Members(group, members) ? kErrorSuccess : kErrorNoSuchAlias;
    });
}

void RecordedSecurity::FindAccounts(std::u16string_view name, std::vector<std::u16string>& accounts) const {
    for (const auto& [known, its] : m_settings.accounts) {
        if (EqualsNoCase(known, name)) accounts = its;
    }
}

// Names without their domain; an identifier that nobody has is left out.
void RecordedSecurity::ResolveAccounts(std::span<const std::byte> descriptor,
                                       std::vector<std::u16string>& accounts) const {
    for (const Sid& sid : ReadAccessList(ByteView(descriptor))) {
        if (auto name = m_accounts->Find(sid)) accounts.push_back(std::move(name->account));
    }
}

Win32Error RecordedSecurity::GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) {
    accounts.clear();
    FileInfo info;
    if (const Win32Error error = m_files.GetInfo(path, info); error != kErrorSuccess) return error;
    return Guarded([&]() -> Win32Error {
        WinPath parsed;
        if (ParsePath(path, parsed) == kErrorSuccess) FindAccounts(parsed.text, accounts);
        if (m_accounts != nullptr && accounts.empty()) ResolveAccounts(m_files.ReadSecurity(path), accounts);
        return kErrorSuccess;
    });
}

Win32Error RecordedSecurity::GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) {
    accounts.clear();
    return Guarded([&]() -> Win32Error {
        const std::u16string path = m_registry.StoredPath(key);
        if (path.empty()) return kErrorInvalidHandle;
        if (path.starts_with(kMachineRoot)) {
            FindAccounts(std::u16string(kMachineName).append(path, kMachineRoot.size()), accounts);
        }
        if (m_accounts != nullptr && accounts.empty()) ResolveAccounts(m_registry.Security(key), accounts);
        return kErrorSuccess;
    });
}

}  // namespace roundup
