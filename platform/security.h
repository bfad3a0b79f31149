// Local groups and the accounts named in access lists.
#pragma once

#include <string>
#include <vector>

#include "platform/registry.h"

namespace roundup {

class ISecurity {
  public:
    ISecurity() = default;
    ISecurity(const ISecurity&) = delete;
    ISecurity& operator=(const ISecurity&) = delete;
    virtual ~ISecurity() = default;

    // NetLocalGroupEnum, level 1: the names of the local groups.
    virtual Win32Error GetLocalGroups(std::vector<std::u16string>& groups) = 0;
    // NetLocalGroupGetMembers, level 3: the members of a group as domain\name.
    virtual Win32Error GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) = 0;
    // GetNamedSecurityInfoW of a file or folder, its discretionary access list: the account name of each entry in
    // order (LookupAccountSidW, without the domain). An entry that cannot be resolved is left out.
    virtual Win32Error GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) = 0;
    // The same of an open key (GetSecurityInfo).
    virtual Win32Error GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) = 0;
};

}  // namespace roundup
