// Keys by the path under which Windows keeps them: no views, but the aliases and symbolic links that hold in each.
#pragma once

#include <string_view>

#include "platform/recorded/registry/foldedname.h"
#include "platform/recorded/registry/registrypath.h"
#include "platform/recorded/registry/registrystore.h"

namespace roundup {

// Works on a store whose lock the caller holds: shared for finding, exclusive for making. Finding answers null for a
// key that is not there.
class StoredKeys {
  public:
    explicit StoredKeys(RegistryStore& store) noexcept : m_store(store), m_tree(store.Tree()) {}

    // A whole path with its root; null also for an unknown root.
    RegistryNode* Find(std::u16string_view path);
    RegistryNode* Make(std::u16string_view path);

    // A path below a root. An empty one is the root.
    RegistryNode* Find(RegistryRoot root, std::u16string_view path);
    RegistryNode& Make(RegistryRoot root, std::u16string_view path);

    RegistryNode* FindBelow(RegistryNode& node, std::u16string_view path);
    RegistryNode& MakeBelow(RegistryNode& node, std::u16string_view path);

    // The child of that name as it stands, or null: aliases of the place followed, a symbolic link not.
    RegistryNode* FindChild(RegistryNode& node, const FoldedName& name);

    // What a chain of symbolic links ends in; node itself when it is none. Null for a link that leads nowhere or in a
    // circle. Targets are stored paths, whatever the view of who follows them.
    RegistryNode* Follow(RegistryNode* node);

  private:
    // links counts down over the whole lookup, so that links whose targets run through further links cannot make one
    // lookup a long one.
    RegistryNode* FindBelow(RegistryNode& node, std::u16string_view path, int& links);
    RegistryNode* Follow(RegistryNode* node, int& links);
    RegistryNode& MakeChild(RegistryNode& node, std::u16string_view name);
    bool IsWowClasses(const RegistryNode& node, std::u16string_view name) const noexcept;
    std::u16string_view UserOfClassesAlias(const RegistryNode& node, std::u16string_view name) const noexcept;

    RegistryStore& m_store;
    RegistryTree& m_tree;
};

}  // namespace roundup
