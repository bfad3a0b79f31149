#include "platform/recorded/registry/registrypath.h"

#include <algorithm>

#include "utility/casemap.h"

namespace roundup {

namespace {

struct RootName {
    std::u16string_view full;
    std::u16string_view brief;
    RegistryRoot root;
};

constexpr RootName kRootNames[] = {
    {u"HKEY_LOCAL_MACHINE", u"HKLM", RegistryRoot::LocalMachine},
    {u"HKEY_CURRENT_USER", u"HKCU", RegistryRoot::CurrentUser},
    {u"HKEY_USERS", u"HKU", RegistryRoot::Users},
    {u"HKEY_CLASSES_ROOT", u"HKCR", RegistryRoot::ClassesRoot},
    {u"HKEY_CURRENT_CONFIG", u"HKCC", RegistryRoot::CurrentConfig},
};

}  // namespace

std::u16string_view TakeComponent(std::u16string_view& path) noexcept {
    path.remove_prefix(std::min(path.find_first_not_of(u'\\'), path.size()));
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const std::u16string_view component = path.substr(0, end);
    path.remove_prefix(end);
    return component;
}

std::optional<RegistryRoot> TakeRoot(std::u16string_view& path, bool shortNames) noexcept {
    std::u16string_view rest = path;
    const std::u16string_view name = TakeComponent(rest);
    for (const RootName& candidate : kRootNames) {
        if (EqualsNoCase(name, candidate.full) || (shortNames && EqualsNoCase(name, candidate.brief))) {
            path = rest;
            return candidate.root;
        }
    }
    return std::nullopt;
}

}  // namespace roundup
