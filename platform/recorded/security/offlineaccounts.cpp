// The SAM keeps two domains, "Builtin" (S-1-5-32) and "Account" (that of the machine). In each the keys Users\Names,
// Groups\Names and Aliases\Names have a key for each name, whose default value has the number of the account in place
// of a type. A group's members stand in the value "C" of its key, named by its number. A service has no account: its
// identifier is S-1-5-80 and the hash of its upper-cased name.
#include "platform/recorded/security/offlineaccounts.h"

#include <algorithm>

#include "platform/recorded/registrytext.h"
#include "platform/recorded/security/samvalues.h"
#include "platform/recorded/security/sha1.h"
#include "platform/recorded/security/wellknownaccounts.h"
#include "utility/casemap.h"
#include "utility/formattext.h"

namespace roundup {

namespace {

constexpr const char16_t* kServices = u"SYSTEM\\CurrentControlSet\\Services";
constexpr std::uint32_t kBuiltinParts[] = {32};
constexpr std::uint32_t kServiceParts[] = {80};

using Numbered = std::vector<std::pair<std::uint32_t, std::u16string>>;

const std::u16string* FindNumber(const Numbered& names, std::uint32_t number) noexcept {
    const auto found = std::ranges::lower_bound(names, number, {}, &Numbered::value_type::first);
    return found != names.end() && found->first == number ? &found->second : nullptr;
}

// The words as the parts of the identifier show them: the bytes of the hash in their order.
std::array<std::uint32_t, 5> ServiceHash(std::u16string_view name) {
    std::u16string folded(name);
    for (char16_t& c : folded) c = ToUpper(c);
    std::array<std::uint32_t, 5> hash = Sha1(std::as_bytes(std::span(folded)));
    for (std::uint32_t& word : hash) {
        word = word >> 24 | (word >> 8 & 0xFF00U) | (word << 8 & 0xFF0000U) | word << 24;
    }
    return hash;
}

}  // namespace

Numbered OfflineAccounts::NumbersAndNames(const std::u16string& key) {
    Numbered names;
    std::vector<std::byte> data;
    for (std::u16string& name : ReadSubKeyNames(m_registry, kHkeyLocalMachine, key.c_str())) {
        std::uint32_t number = 0;
        const std::u16string path = FormatText(u"%s\\%s", key, name);
        if (!ReadRegistryBytes(m_registry, kHkeyLocalMachine, path.c_str(), u"", number, data)) continue;
        names.emplace_back(number, std::move(name));
    }
    std::ranges::stable_sort(names, {}, &Numbered::value_type::first);
    return names;
}

void OfflineAccounts::LoadDomain(Domain& domain) {
    const std::u16string key(domain.key);
    domain.aliases = NumbersAndNames(key + u"\\Aliases\\Names");
    domain.users = NumbersAndNames(key + u"\\Users\\Names");
    Numbered groups = NumbersAndNames(key + u"\\Groups\\Names");
    domain.users.insert(domain.users.end(), std::make_move_iterator(groups.begin()),
                        std::make_move_iterator(groups.end()));
    std::ranges::stable_sort(domain.users, {}, &Numbered::value_type::first);
}

void OfflineAccounts::LoadServices() {
    for (std::u16string& name : ReadSubKeyNames(m_registry, kHkeyLocalMachine, kServices)) {
        const auto hash = ServiceHash(name);
        m_services.push_back({hash, std::move(name)});
    }
    std::ranges::sort(m_services, {}, &Service::hash);
}

void OfflineAccounts::Load() {
    std::call_once(m_loaded, [this] {
        LoadDomain(m_builtin);
        LoadDomain(m_machine);
        LoadServices();
        std::uint32_t type = 0;
        std::vector<std::byte> value;
        if (ReadRegistryBytes(m_registry, kHkeyLocalMachine, m_machine.key, u"V", type, value)) {
            m_machineSid = ReadDomainSid(ByteView(value));
        }
    });
}

std::optional<OfflineAccounts::Name> OfflineAccounts::FindService(const Sid& sid) const {
    constexpr std::uint8_t kParts = 6;
    if (sid.count != kParts || !sid.BeginsWith(kServiceParts)) return std::nullopt;
    std::array<std::uint32_t, 5> hash{};
    std::copy_n(sid.parts.begin() + 1, hash.size(), hash.begin());
    const auto found = std::ranges::lower_bound(m_services, hash, {}, &Service::hash);
    if (found == m_services.end() || found->hash != hash) return std::nullopt;
    return Name{u"NT SERVICE", found->name};
}

std::optional<OfflineAccounts::Name> OfflineAccounts::Find(const Sid& sid) {
    Load();
    if (sid.count == 2 && sid.BeginsWith(kBuiltinParts)) {
        if (const std::u16string* name = FindNumber(m_builtin.aliases, sid.Last())) return Name{u"BUILTIN", *name};
    }
    if (m_machineSid && sid.count == m_machineSid->count + 1 &&
        sid.BeginsWith(std::span(m_machineSid->parts).first(m_machineSid->count))) {
        const std::u16string* name = FindNumber(m_machine.users, sid.Last());
        if (name == nullptr) name = FindNumber(m_machine.aliases, sid.Last());
        if (name != nullptr) return Name{m_computer, *name};
    }
    if (auto service = FindService(sid)) return service;
    if (const WellKnownAccount* known = FindWellKnownAccount(sid)) {
        return Name{std::u16string(known->domain), std::u16string(known->name)};
    }
    return std::nullopt;
}

std::vector<std::u16string> OfflineAccounts::Groups() {
    Load();
    std::vector<std::u16string> groups;
    for (const Domain* domain : {&m_builtin, &m_machine}) {
        for (const auto& [number, name] : domain->aliases) groups.push_back(name);
    }
    return groups;
}

bool OfflineAccounts::Members(std::u16string_view group, std::vector<std::u16string>& members) {
    Load();
    for (const Domain* domain : {&m_builtin, &m_machine}) {
        const auto found = std::ranges::find_if(
            domain->aliases, [group](const auto& alias) { return EqualsNoCase(alias.second, group); });
        if (found == domain->aliases.end()) continue;
        const std::u16string key = FormatText(u"%s\\Aliases\\%08X", domain->key, found->first);
        std::uint32_t type = 0;
        std::vector<std::byte> value;
        if (!ReadRegistryBytes(m_registry, kHkeyLocalMachine, key.c_str(), u"C", type, value)) return false;
        for (const Sid& sid : ReadAliasMembers(ByteView(value))) {
            const auto name = Find(sid);
            if (!name) {
                members.push_back(sid.Text());
            } else {
                members.push_back(name->domain.empty() ? name->account : name->domain + u"\\" + name->account);
            }
        }
        return true;
    }
    return false;
}

}  // namespace roundup
