// How a path is walked. Most keys are one node, and a step is one lookup of the child; what follows is about the few
// places where the 32-bit view or HKEY_CLASSES_ROOT are something else. Nodes know their role there by their place in
// the tree (wow64rules.h), so that everywhere else a step costs no comparison of names.
//
// Example, 32-bit view, HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths: the step to SOFTWARE
// gives the pair (SOFTWARE\Wow6432Node, SOFTWARE), each step after it goes on in both as long as a shared key can lie
// below, and App Paths, which is shared, is taken from the second. Uninstall beside it is no shared key and is taken
// from the first. A pair whose first half is missing is still there when something shared lies below it.
#include "platform/recorded/registry/registryviews.h"

#include "utility/casemap.h"

namespace roundup {

namespace {

using Kind = KeyRef::Kind;
using Role = KeyRole::Kind;

constexpr std::u16string_view kClasses = u"Software\\Classes";
constexpr std::u16string_view kWowNode = u"Wow6432Node";

bool IsSoftware(const RegistryNode& node) noexcept {
    return (node.role.kind == Role::Software || node.role.kind == Role::SoftwareWow) && node.role.rule == 0;
}

// The rule of a pair, whichever half of it is there.
std::uint8_t RuleOf(const KeyRef& key) noexcept {
    return key.other != nullptr ? key.other->role.rule : key.node->role.rule;
}

}  // namespace

RegistryNode* KeyRef::Primary() const noexcept { return kind == Kind::Classes && node == nullptr ? other : node; }

RegistryNode* KeyRef::Single() const noexcept {
    if (kind == Kind::Plain) return node;
    if (kind == Kind::Classes && (node == nullptr || other == nullptr)) return Primary();
    return nullptr;
}

KeyRef RegistryViews::Root(RegistryRoot root, RegistryView view) {
    switch (root) {
        case RegistryRoot::LocalMachine:
            return Plain(&m_tree.Machine());
        case RegistryRoot::Users:
            return Plain(&m_tree.Users());
        case RegistryRoot::CurrentUser:
            return Plain(&m_store.User());
        case RegistryRoot::CurrentConfig:
            return Plain(m_stored.Find(RegistryRoot::CurrentConfig, u""));
        case RegistryRoot::ClassesRoot:
            break;
    }
    const KeyRef machine = Open(Plain(&m_tree.Machine()), kClasses, view);
    if (IsWine(m_store.Layout())) return machine;
    const KeyRef user = Open(Plain(&m_store.User()), kClasses, view);
    if (machine.IsMissing() && user.IsMissing()) return {};
    return {Kind::Classes, user.node, machine.node};
}

KeyRef RegistryViews::MakeRoot(RegistryRoot root, RegistryView view) {
    const KeyRef key = Root(root, view);
    if (!key.IsMissing()) return key;
    m_stored.Make(root, u"");
    return Root(root, view);
}

KeyRef RegistryViews::Open(const KeyRef& key, std::u16string_view path, RegistryView view) {
    KeyRef at = key;
    for (auto name = TakeComponent(path); !name.empty() && !at.IsMissing(); name = TakeComponent(path)) {
        at = Step(at, name, view);
    }
    return at;
}

KeyRef RegistryViews::Make(const KeyRef& key, std::u16string_view path, RegistryView view, bool& denied) {
    KeyRef at = key;
    denied = false;
    for (auto name = TakeComponent(path); !name.empty() && !at.IsMissing(); name = TakeComponent(path)) {
        KeyRef next = Step(at, name, view);
        if (next.IsMissing()) {
            RegistryNode& place = PlaceForChild(at, name, view);
            denied = place.access != KeyAccess::Full;
            if (denied) return {};
            m_tree.MakeChild(place, m_tree.Fold(name));
            next = Step(at, name, view);
        }
        at = next;
    }
    return at;
}

RegistryNode& RegistryViews::WritableNode(const KeyRef& key) {
    RegistryNode* const primary = key.Primary();
    return primary != nullptr ? *primary : WowTwin(*key.other);
}

KeyContent RegistryViews::Content(const KeyRef& key) {
    return key.kind == Kind::Classes ? MergedClasses(key) : MergedRedirected(key);
}

KeyRef RegistryViews::Plain(RegistryNode* node) {
    if (node != nullptr && node->link) node = m_stored.Follow(node);
    if (node == nullptr) return {};
    return {Kind::Plain, node, nullptr};
}

RegistryNode* RegistryViews::Child(RegistryNode* node, const FoldedName& name) {
    return node != nullptr ? m_tree.FindChild(*node, name) : nullptr;
}

KeyRef RegistryViews::Step(const KeyRef& key, std::u16string_view name, RegistryView view) {
    switch (key.kind) {
        case Kind::Plain:
            return StepPlain(*key.node, name, view);
        case Kind::Classes:
            return StepClasses(key, name, view);
        case Kind::Redirected:
        case Kind::NamedWow:
            return StepRedirected(key, name);
        case Kind::Missing:
            break;
    }
    return {};
}

KeyRef RegistryViews::StepPlain(RegistryNode& node, std::u16string_view name, RegistryView view) {
    if (view == RegistryView::Wow32 && IsWine(m_store.Layout())) return StepWine(node, name);
    if (node.role.kind == Role::Ordinary || m_store.Layout() != RegistryLayout::Windows64) {
        return Plain(m_stored.FindChild(node, m_tree.Fold(name)));
    }
    const bool wow = view == RegistryView::Wow32;
    if (node.role.kind == Role::Software && node.role.rule == 0) {
        if (EqualsNoCase(name, kWowNode)) {
            const KeyRef named = RedirectedSoftware(node, Kind::NamedWow);
            const bool isThere = named.node != nullptr || HasSharedBelow(node) ||
                                 !StepRedirectedRoot(named, m_tree.Fold(u"Classes")).IsMissing();
            return isThere ? named : KeyRef();
        }
        if (wow) return StepRedirected(RedirectedSoftware(node, Kind::Redirected), name);
    }
    if (wow && node.role.kind == Role::Classes && IsRedirectedClassesKey(name)) {
        return Plain(Child(WowChild(node), m_tree.Fold(name)));
    }
    RegistryNode* const child = m_stored.FindChild(node, m_tree.Fold(name));
    if (wow && node.role.kind == Role::Machine && child != nullptr && child->role.kind == Role::Software) {
        return RedirectedSoftware(*child, Kind::Redirected);
    }
    return Plain(child);
}

KeyRef RegistryViews::RedirectedSoftware(RegistryNode& software, Kind kind) {
    return {kind, WowChild(software), &software};
}

KeyRef RegistryViews::StepRedirected(const KeyRef& key, std::u16string_view name) {
    const FoldedName folded = m_tree.Fold(name);
    if (RuleOf(key) == 0 && (folded.Text() == u"CLASSES" || folded.Text() == u"WOW6432NODE")) {
        return StepRedirectedRoot(key, folded);
    }
    RegistryNode* const own = Child(key.node, folded);
    RegistryNode* const other = Child(key.other, folded);
    const RegistryNode* const known = other != nullptr ? other : own;
    if (known == nullptr) return {};
    switch (known->role.kind) {
        case Role::Shared:
            return Plain(key.kind == Kind::NamedWow && own != nullptr ? own : other);
        case Role::Software:
        case Role::SoftwareWow:
            if (own == nullptr && !HasSharedBelow(*other)) return {};
            return {key.kind, own, other};
        default:
            return Plain(own);
    }
}

KeyRef RegistryViews::StepRedirectedRoot(const KeyRef& key, const FoldedName& name) {
    if (name.Text() == u"CLASSES") {
        RegistryNode* const classes = Child(key.other, name);
        if (key.kind == Kind::Redirected || classes == nullptr) return Plain(classes);
        return Plain(WowChild(*classes));
    }
    if (key.kind == Kind::Redirected) return {Kind::NamedWow, key.node, key.other};
    return Plain(Child(key.node, name));
}

KeyRef RegistryViews::StepClasses(const KeyRef& key, std::u16string_view name, RegistryView view) {
    const KeyRef user = key.node != nullptr ? StepPlain(*key.node, name, view) : KeyRef();
    const KeyRef machine = key.other != nullptr ? StepPlain(*key.other, name, view) : KeyRef();
    if (user.IsMissing() && machine.IsMissing()) return {};
    return {Kind::Classes, user.node, machine.node};
}

// A prefix has no table of shared keys, but links where it shares. A key with a subkey Wow6432Node is that subkey in
// the 32-bit view; Classes alone stays, and shows in Wow6432Node's place what Wow6432Node does not have.
KeyRef RegistryViews::StepWine(RegistryNode& node, std::u16string_view name) {
    const FoldedName folded = m_tree.Fold(name);
    RegistryNode* child = nullptr;
    if (folded.Text() == u"WOW6432NODE") {
        // Said once more by a path that names what the view already did.
        RegistryNode* const wow = Child(&node, folded);
        return Plain(wow == nullptr && node.Folded() == folded.Text() ? &node : wow);
    }
    if (folded.Text() == u"CLASSES" && IsSoftware(node)) {
        child = Child(node.role.kind == Role::Software ? &node : node.parent, folded);
    } else {
        if (node.redirects) child = Child(Plain(WowChild(node)).node, folded);
        if (child == nullptr && (!node.redirects || node.role.kind == Role::Classes)) child = Child(&node, folded);
    }
    const KeyRef found = Plain(child);
    if (found.IsMissing() || !found.node->redirects || found.node->role.kind == Role::Classes) return found;
    return Plain(WowChild(*found.node));
}

// Walks the rules and not the children: the rules are few.
bool RegistryViews::HasSharedBelow(RegistryNode& node) {
    for (std::uint8_t rule = FirstRuleBelow(node.role.rule); rule != 0; rule = NextRule(rule)) {
        RegistryNode* const child = Child(&node, m_tree.Fold(RuleName(rule)));
        if (child != nullptr && (FirstRuleBelow(rule) == 0 || HasSharedBelow(*child))) return true;
    }
    return false;
}

}  // namespace roundup
