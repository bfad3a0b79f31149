#include "platform/recorded/registry/storedkeys.h"

#include <cstring>
#include <string>

#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr int kMostLinks = 32;
constexpr std::u16string_view kClasses = u"Software\\Classes";
constexpr std::u16string_view kCurrentProfile = u"SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current";
constexpr std::u16string_view kUserClassesEnding = u"_Classes";

// The value's bytes as text without terminators: a recorded target may have one or none.
std::u16string LinkTarget(const RegistryValue& value) {
    std::u16string target(value.size / sizeof(char16_t), u'\0');
    if (!target.empty()) std::memcpy(target.data(), value.data, target.size() * sizeof(char16_t));
    while (!target.empty() && target.back() == u'\0') target.pop_back();
    return target;
}

}  // namespace

RegistryNode* StoredKeys::Find(std::u16string_view path) {
    const auto root = TakeRoot(path, true);
    return root ? Find(*root, path) : nullptr;
}

RegistryNode* StoredKeys::Make(std::u16string_view path) {
    const auto root = TakeRoot(path, true);
    return root ? &Make(*root, path) : nullptr;
}

RegistryNode* StoredKeys::Find(RegistryRoot root, std::u16string_view path) {
    switch (root) {
        case RegistryRoot::LocalMachine:
            return FindBelow(m_tree.Machine(), path);
        case RegistryRoot::Users:
            return FindBelow(m_tree.Users(), path);
        case RegistryRoot::CurrentUser:
            return FindBelow(m_store.User(), path);
        case RegistryRoot::CurrentConfig: {
            RegistryNode* const profile = FindBelow(m_tree.Machine(), kCurrentProfile);
            return profile != nullptr ? FindBelow(*profile, path) : nullptr;
        }
        case RegistryRoot::ClassesRoot:
            break;
    }
    for (RegistryNode* const base : {&m_store.User(), &m_tree.Machine()}) {
        if (base == &m_store.User() && IsWine(m_store.Layout())) continue;
        RegistryNode* const classes = FindBelow(*base, kClasses);
        RegistryNode* const found = classes != nullptr ? FindBelow(*classes, path) : nullptr;
        if (found != nullptr) return found;
    }
    return nullptr;
}

RegistryNode& StoredKeys::Make(RegistryRoot root, std::u16string_view path) {
    switch (root) {
        case RegistryRoot::LocalMachine:
            return MakeBelow(m_tree.Machine(), path);
        case RegistryRoot::Users:
            return MakeBelow(m_tree.Users(), path);
        case RegistryRoot::CurrentUser:
            return MakeBelow(m_store.User(), path);
        case RegistryRoot::CurrentConfig:
            return MakeBelow(MakeBelow(m_tree.Machine(), kCurrentProfile), path);
        case RegistryRoot::ClassesRoot:
            break;
    }
    std::u16string_view rest = path;
    const bool machineOnly = TakeComponent(rest).empty() || IsWine(m_store.Layout());
    RegistryNode* const classes = machineOnly ? nullptr : FindBelow(m_store.User(), kClasses);
    RegistryNode* const users = classes != nullptr ? FindBelow(*classes, path) : nullptr;
    return users != nullptr ? *users : MakeBelow(MakeBelow(m_tree.Machine(), kClasses), path);
}

RegistryNode* StoredKeys::FindBelow(RegistryNode& node, std::u16string_view path) {
    int links = kMostLinks;
    return FindBelow(node, path, links);
}

RegistryNode* StoredKeys::FindBelow(RegistryNode& node, std::u16string_view path, int& links) {
    RegistryNode* at = &node;
    for (auto name = TakeComponent(path); !name.empty() && at != nullptr; name = TakeComponent(path)) {
        at = FindChild(*at, m_tree.Fold(name));
        if (at != nullptr && at->link) at = Follow(at, links);
    }
    return at;
}

RegistryNode& StoredKeys::MakeBelow(RegistryNode& node, std::u16string_view path) {
    RegistryNode* at = &node;
    for (auto name = TakeComponent(path); !name.empty(); name = TakeComponent(path)) at = &MakeChild(*at, name);
    return *at;
}

RegistryNode& StoredKeys::MakeChild(RegistryNode& node, std::u16string_view name) {
    if (IsWowClasses(node, name)) return MakeBelow(*node.parent, u"Classes\\Wow6432Node");
    if (const auto user = UserOfClassesAlias(node, name); !user.empty()) {
        return MakeBelow(m_tree.MakeChild(node, m_tree.Fold(user)), kClasses);
    }
    RegistryNode& child = m_tree.MakeChild(node, m_tree.Fold(name));
    // What is made below a link that leads nowhere stays below the link: nothing can see it there.
    RegistryNode* const target = child.link ? Follow(&child) : &child;
    return target != nullptr ? *target : child;
}

RegistryNode* StoredKeys::FindChild(RegistryNode& node, const FoldedName& name) {
    if (node.role.kind == KeyRole::Kind::Ordinary) return m_tree.FindChild(node, name);
    if (IsWowClasses(node, name.Original())) return FindBelow(*node.parent, u"Classes\\Wow6432Node");
    if (const auto user = UserOfClassesAlias(node, name.Original()); !user.empty()) {
        RegistryNode* const key = m_tree.FindChild(node, m_tree.Fold(user));
        RegistryNode* const software = key != nullptr ? m_tree.FindChild(*key, m_tree.Fold(u"Software")) : nullptr;
        return software != nullptr ? m_tree.FindChild(*software, m_tree.Fold(u"Classes")) : nullptr;
    }
    return m_tree.FindChild(node, name);
}

RegistryNode* StoredKeys::Follow(RegistryNode* node) {
    int links = kMostLinks;
    return Follow(node, links);
}

RegistryNode* StoredKeys::Follow(RegistryNode* node, int& links) {
    while (node != nullptr && node->link) {
        if (links-- == 0) return nullptr;
        const RegistryValue* const value = m_tree.FindValue(*node, m_tree.Fold(u"SymbolicLinkValue"));
        if (value == nullptr) return nullptr;
        const std::u16string target = LinkTarget(*value);
        std::u16string_view rest = target;
        if (!EqualsNoCase(TakeComponent(rest), u"Registry")) return nullptr;
        const std::u16string_view root = TakeComponent(rest);
        const bool machine = EqualsNoCase(root, u"Machine");
        if (!machine && !EqualsNoCase(root, u"User")) return nullptr;
        node = FindBelow(machine ? m_tree.Machine() : m_tree.Users(), rest, links);
    }
    return node;
}

// SOFTWARE\Wow6432Node\Classes is SOFTWARE\Classes\Wow6432Node.
bool StoredKeys::IsWowClasses(const RegistryNode& node, std::u16string_view name) const noexcept {
    return node.role.kind == KeyRole::Kind::SoftwareWow && node.role.rule == 0 &&
           m_store.Layout() == RegistryLayout::Windows64 && EqualsNoCase(name, u"Classes");
}

// HKEY_USERS\<sid>_Classes is HKEY_USERS\<sid>\Software\Classes. Empty when the name is no such alias.
std::u16string_view StoredKeys::UserOfClassesAlias(const RegistryNode& node, std::u16string_view name) const noexcept {
    if (node.role.kind != KeyRole::Kind::Users || IsWine(m_store.Layout())) return {};
    if (name.size() <= kUserClassesEnding.size()) return {};
    const std::u16string_view user = name.substr(0, name.size() - kUserClassesEnding.size());
    return EqualsNoCase(name.substr(user.size()), kUserClassesEnding) ? user : std::u16string_view();
}

}  // namespace roundup
