// Accounts and local groups of a Windows that is not running, from its registry.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/recorded/security/securitydescriptor.h"
#include "platform/registry.h"

namespace roundup {

// Reads the SAM and the list of services at the first question, once. Every thread may ask. Throws std::bad_alloc.
class OfflineAccounts {
  public:
    OfflineAccounts(IRegistry& registry, std::u16string computer)
        : m_registry(registry), m_computer(std::move(computer)) {}

    struct Name {
        std::u16string domain;  // may be empty
        std::u16string account;
    };
    // Nothing for an account that is not known.
    std::optional<Name> Find(const Sid& sid);
    // The local groups: those of Windows itself, then the machine's own, each part in the order of their numbers.
    std::vector<std::u16string> Groups();
    // The members of a group as domain\name, those that are not known by their identifier; false without the group.
    bool Members(std::u16string_view group, std::vector<std::u16string>& members);

  private:
    struct Domain {
        const char16_t* key;
        std::vector<std::pair<std::uint32_t, std::u16string>> aliases;  // number, name; ascending by number
        std::vector<std::pair<std::uint32_t, std::u16string>> users;    // likewise, with the machine's global groups
    };
    struct Service {
        std::array<std::uint32_t, 5> hash;
        std::u16string name;
    };

    void Load();
    void LoadDomain(Domain& domain);
    void LoadServices();
    std::vector<std::pair<std::uint32_t, std::u16string>> NumbersAndNames(const std::u16string& key);
    std::optional<Name> FindService(const Sid& sid) const;

    IRegistry& m_registry;
    const std::u16string m_computer;
    std::once_flag m_loaded;
    // Written by Load alone.
    Domain m_builtin{u"SAM\\SAM\\Domains\\Builtin", {}, {}};
    Domain m_machine{u"SAM\\SAM\\Domains\\Account", {}, {}};
    std::optional<Sid> m_machineSid;
    std::vector<Service> m_services;
};

}  // namespace roundup
