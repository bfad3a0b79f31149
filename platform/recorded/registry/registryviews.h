// What the two views of a machine show: from a root or an open key to the nodes that stand behind a path.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/recorded/registry/registrystore.h"
#include "platform/recorded/registry/storedkeys.h"

namespace roundup {

enum class RegistryView : std::uint8_t { Native, Wow32 };

// A key as a program sees it. Most are one node; some are put together of two, either of which may be missing.
struct KeyRef {
    enum class Kind : std::uint8_t {
        Missing,
        Plain,    // node
        Classes,  // HKEY_CLASSES_ROOT and below: node of the user over other of the machine
        // SOFTWARE in the 32-bit view and what lies between it and a shared key: node is the key below Wow6432Node,
        // other the same one beside it, whose shared subkeys are seen here.
        Redirected,
        NamedWow,  // the same, reached by the name Wow6432Node: what is stored there is seen first
    };

    Kind kind = Kind::Missing;
    RegistryNode* node = nullptr;
    RegistryNode* other = nullptr;

    bool IsMissing() const noexcept { return kind == Kind::Missing; }
    // The node that has the key's values and access rights; null when the key is nothing but a way to others.
    RegistryNode* Primary() const noexcept;
    // The node whose subkeys and values are those of the key; null when two have to be put together.
    RegistryNode* Single() const noexcept;
};

// The subkeys and values of a key that two nodes make up, in the order of enumeration.
struct KeyContent {
    std::vector<RegistryNode*> children;
    std::vector<const RegistryValue*> values;

    KeyInfo Info() const noexcept;
};

// The caller holds the store's lock: shared for everything but Make and WritableNode, which need it exclusive.
class RegistryViews {
  public:
    explicit RegistryViews(RegistryStore& store) noexcept : m_store(store), m_tree(store.Tree()), m_stored(store) {}

    KeyRef Root(RegistryRoot root, RegistryView view);

    // The key that the path names below key; Missing when it is not there. An empty path is the key itself.
    KeyRef Open(const KeyRef& key, std::u16string_view path, RegistryView view);

    // The same, but makes the place of a root that no key of the source has.
    KeyRef MakeRoot(RegistryRoot root, RegistryView view);
    // As Open, but makes what is missing. Missing with denied: a key on the way would have to be changed and may not
    // be; without: a symbolic link on the way leads nowhere.
    KeyRef Make(const KeyRef& key, std::u16string_view path, RegistryView view, bool& denied);

    // The node that values of the key are written to, made when there is none yet.
    RegistryNode& WritableNode(const KeyRef& key);

    KeyContent Content(const KeyRef& key);

  private:
    KeyRef Step(const KeyRef& key, std::u16string_view name, RegistryView view);
    KeyRef StepPlain(RegistryNode& node, std::u16string_view name, RegistryView view);
    KeyRef StepRedirected(const KeyRef& key, std::u16string_view name);
    KeyRef StepRedirectedRoot(const KeyRef& key, const FoldedName& name);
    KeyRef StepClasses(const KeyRef& key, std::u16string_view name, RegistryView view);
    KeyRef StepWine(RegistryNode& node, std::u16string_view name);
    KeyRef Plain(RegistryNode* node);
    KeyRef RedirectedSoftware(RegistryNode& software, KeyRef::Kind kind);
    RegistryNode* Child(RegistryNode* node, const FoldedName& name);
    RegistryNode* WowChild(RegistryNode& node) { return Child(&node, m_tree.Fold(u"Wow6432Node")); }
    bool HasSharedBelow(RegistryNode& node);

    RegistryNode& PlaceForChild(KeyRef& key, std::u16string_view name, RegistryView view);
    RegistryNode& PlaceInPlain(RegistryNode& node, std::u16string_view name, RegistryView view);
    RegistryNode& PlaceInRedirected(KeyRef& key, std::u16string_view name);
    RegistryNode& Twin(RegistryNode& node, KeyRole::Kind topKind, RegistryNode& twinOfTop);
    RegistryNode& WowTwin(RegistryNode& node);
    RegistryNode& SharedTwin(RegistryNode& node);

    KeyContent MergedClasses(const KeyRef& key);
    KeyContent MergedRedirected(const KeyRef& key);
    bool ShowsOwn(const KeyRef& key, RegistryNode& child);
    bool ShowsOther(const KeyRef& key, RegistryNode& child);

    RegistryStore& m_store;
    RegistryTree& m_tree;
    StoredKeys m_stored;
};

}  // namespace roundup
