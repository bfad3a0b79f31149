// Where the views put what is made through them, and what a key that two nodes make up contains.
#include <algorithm>
#include <vector>

#include "platform/recorded/registry/registryviews.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

using Kind = KeyRef::Kind;
using Role = KeyRole::Kind;

constexpr std::u16string_view kWowNode = u"Wow6432Node";

}  // namespace

KeyInfo KeyContent::Info() const noexcept {
    KeyInfo info;
    info.subKeys = static_cast<std::uint32_t>(children.size());
    info.values = static_cast<std::uint32_t>(values.size());
    for (const RegistryNode* child : children) info.longestSubKey = std::max(info.longestSubKey, child->nameLength);
    for (const RegistryValue* value : values) {
        info.longestValueName = std::max(info.longestValueName, value->nameLength);
        info.longestValueData = std::max(info.longestValueData, value->size);
    }
    return info;
}

// The node below which the missing child is to be made so that a step from key finds it. Completes the pair key when
// the half is missing that gets the child.
RegistryNode& RegistryViews::PlaceForChild(KeyRef& key, std::u16string_view name, RegistryView view) {
    switch (key.kind) {
        case Kind::Redirected:
        case Kind::NamedWow:
            return PlaceInRedirected(key, name);
        case Kind::Classes:
            // New keys are the machine's; the user's are made below HKEY_CURRENT_USER alone.
            if (key.other == nullptr) {
                RegistryNode& top = m_stored.MakeBelow(m_tree.Machine(), u"Software\\Classes");
                key.other = &Twin(*key.node, Role::Classes, top);
            }
            return PlaceInPlain(*key.other, name, view);
        case Kind::Plain:
        case Kind::Missing:
            break;
    }
    return PlaceInPlain(*key.node, name, view);
}

RegistryNode& RegistryViews::PlaceInPlain(RegistryNode& node, std::u16string_view name, RegistryView view) {
    if (view != RegistryView::Wow32) return node;
    if (node.role.kind == Role::Classes) {
        return IsRedirectedClassesKey(name) ? m_tree.MakeChild(node, m_tree.Fold(kWowNode)) : node;
    }
    if (IsWine(m_store.Layout())) {
        RegistryNode* const wow = node.redirects ? Plain(WowChild(node)).node : nullptr;
        return wow != nullptr && !EqualsNoCase(name, u"Classes") ? *wow : node;
    }
    if (node.role.kind == Role::Software && node.role.rule == 0 && !EqualsNoCase(name, kWowNode)) {
        KeyRef key = RedirectedSoftware(node, Kind::Redirected);
        return PlaceInRedirected(key, name);
    }
    return node;
}

RegistryNode& RegistryViews::PlaceInRedirected(KeyRef& key, std::u16string_view name) {
    const std::uint8_t rule = key.other != nullptr ? key.other->role.rule : key.node->role.rule;
    const KeyRole role = RoleOfChild({Role::Software, rule}, name);
    if (role.kind == Role::Classes || role.kind == Role::Shared) {
        if (key.other == nullptr) key.other = &SharedTwin(*key.node);
        // Seen by the name Wow6432Node, Classes is the key below the real Classes.
        if (role.kind == Role::Classes && key.kind == Kind::NamedWow) {
            m_stored.MakeBelow(*key.other, u"Classes\\Wow6432Node");
        }
        return *key.other;
    }
    if (key.node == nullptr) key.node = &WowTwin(*key.other);
    return *key.node;
}

// The key below twinOfTop that has the same path as node has below the nearest ancestor of that kind; made when it is
// not there.
RegistryNode& RegistryViews::Twin(RegistryNode& node, Role topKind, RegistryNode& twinOfTop) {
    std::vector<RegistryNode*> names;
    for (RegistryNode* at = &node; at != nullptr; at = at->parent) {
        if (at->role.kind == topKind && at->role.rule == 0) break;
        names.push_back(at);
    }
    RegistryNode* twin = &twinOfTop;
    std::ranges::reverse(names);
    for (const RegistryNode* at : names) twin = &m_tree.MakeChild(*twin, m_tree.Fold(at->Name()));
    return *twin;
}

RegistryNode& RegistryViews::WowTwin(RegistryNode& node) {
    RegistryNode& software = m_stored.MakeBelow(m_tree.Machine(), u"SOFTWARE");
    return Twin(node, Role::Software, m_tree.MakeChild(software, m_tree.Fold(kWowNode)));
}

RegistryNode& RegistryViews::SharedTwin(RegistryNode& node) {
    return Twin(node, Role::SoftwareWow, m_stored.MakeBelow(m_tree.Machine(), u"SOFTWARE"));
}

KeyContent RegistryViews::MergedClasses(const KeyRef& key) {
    KeyContent content;
    std::uint32_t userAt = 0;
    std::uint32_t machineAt = 0;
    RegistryNode* user = m_tree.ChildAt(*key.node, 0);
    RegistryNode* machine = m_tree.ChildAt(*key.other, 0);
    while (user != nullptr || machine != nullptr) {
        const int order = user == nullptr ? 1 : machine == nullptr ? -1 : user->Folded().compare(machine->Folded());
        content.children.push_back(order <= 0 ? user : machine);
        if (order <= 0) user = m_tree.ChildAt(*key.node, ++userAt);
        if (order >= 0) machine = m_tree.ChildAt(*key.other, ++machineAt);
    }
    for (std::uint32_t i = 0; const RegistryValue* value = m_tree.ValueAt(*key.node, i); ++i) {
        content.values.push_back(value);
    }
    for (std::uint32_t i = 0; const RegistryValue* value = m_tree.ValueAt(*key.other, i); ++i) {
        if (m_tree.FindValue(*key.node, m_tree.Fold(value->Name())) == nullptr) content.values.push_back(value);
    }
    return content;
}

KeyContent RegistryViews::MergedRedirected(const KeyRef& key) {
    KeyContent content;
    const auto next = [this](RegistryNode* node, std::uint32_t& at, auto&& shows) -> RegistryNode* {
        while (RegistryNode* const child = node != nullptr ? m_tree.ChildAt(*node, at) : nullptr) {
            ++at;
            if (shows(*child)) return child;
        }
        return nullptr;
    };
    const auto showsOwn = [&](RegistryNode& child) { return ShowsOwn(key, child); };
    const auto showsOther = [&](RegistryNode& child) { return ShowsOther(key, child); };
    std::uint32_t ownAt = 0;
    std::uint32_t otherAt = 0;
    RegistryNode* own = next(key.node, ownAt, showsOwn);
    RegistryNode* other = next(key.other, otherAt, showsOther);
    while (own != nullptr || other != nullptr) {
        const int order = own == nullptr ? 1 : other == nullptr ? -1 : own->Folded().compare(other->Folded());
        content.children.push_back(order <= 0 ? own : other);
        if (order <= 0) own = next(key.node, ownAt, showsOwn);
        if (order >= 0) other = next(key.other, otherAt, showsOther);
    }
    for (std::uint32_t i = 0; key.node != nullptr; ++i) {
        const RegistryValue* const value = m_tree.ValueAt(*key.node, i);
        if (value == nullptr) break;
        content.values.push_back(value);
    }
    return content;
}

// Whether the pair lists a child of its half below Wow6432Node: not when a shared key hides it.
bool RegistryViews::ShowsOwn(const KeyRef& key, RegistryNode& child) {
    if (child.role.kind == Role::Shared)
        return key.kind == Kind::NamedWow || Child(key.other, m_tree.Fold(child.Name()));
    return key.node->role.rule != 0 || child.Folded() != u"CLASSES";
}

// Whether the pair lists a child of its other half: what is shared, and what leads to it.
bool RegistryViews::ShowsOther(const KeyRef& key, RegistryNode& child) {
    switch (child.role.kind) {
        case Role::Shared:
            return true;
        case Role::Classes:
            return key.kind == Kind::Redirected || WowChild(child) != nullptr;
        case Role::Software:
            return HasSharedBelow(child);
        default:
            return false;
    }
}

}  // namespace roundup
