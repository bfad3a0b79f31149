// The tree of keys: making, finding, deleting, and the order of enumeration. No paths, no views, no handles.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/recorded/registry/arena.h"
#include "platform/recorded/registry/foldedname.h"
#include "platform/recorded/registry/registrynode.h"
#include "platform/recorded/registry/sharednames.h"
#include "platform/registry.h"
#include "platform/threading.h"
#include "utility/casemap.h"

namespace roundup {

class RegistryFiller;

// Where keys come from that are read when they are first asked for.
class IRegistryNodeSource {
  public:
    IRegistryNodeSource() = default;
    IRegistryNodeSource(const IRegistryNodeSource&) = delete;
    IRegistryNodeSource& operator=(const IRegistryNodeSource&) = delete;
    virtual ~IRegistryNodeSource() = default;

    // Adds the values and, as pending keys, the subkeys of node, which is node.sourceNode of this source, through
    // the filler alone. False when the source is damaged there; node is emptied then. Calls come one at a time.
    virtual bool Fill(RegistryFiller& filler, RegistryNode& node) = 0;
    // The self-relative security descriptor of the key of that number, good as long as the source; empty without one.
    // Every thread may ask.
    virtual std::span<const std::byte> ReadSecurity(std::uint32_t /*sourceNode*/) const { return {}; }
};

// Reads (Find..., Child..., Value...) may run side by side; everything else needs the tree for itself. Reading fills
// pending keys, under a lock of the tree's own. Nodes live as long as the tree, also deleted ones. Throws
// std::bad_alloc and nothing else; the tree is whole after that.
class RegistryTree {
  public:
    RegistryTree();
    RegistryTree(const RegistryTree&) = delete;
    RegistryTree& operator=(const RegistryTree&) = delete;

    // HKEY_LOCAL_MACHINE and HKEY_USERS; every other root is a place below one of them.
    RegistryNode& Machine() noexcept { return *m_machine; }
    RegistryNode& Users() noexcept { return *m_users; }

    // Lets children stand in the order of their lower-cased names, as a wineserver keeps them. Before the first key is
    // made.
    void OrderByLowerCase(bool lowerCase) noexcept { m_lowerCaseOrder = lowerCase; }

    FoldedName Fold(std::u16string_view name) const { return FoldedName(name, m_seed); }

    // Null when there is none. A key that could not be read has no children and no values: see IsDamaged.
    RegistryNode* FindChild(RegistryNode& node, const FoldedName& name);
    std::uint32_t ChildCount(RegistryNode& node);
    // In ascending order of the upper-cased names, unless told otherwise. Null past the end.
    RegistryNode* ChildAt(RegistryNode& node, std::uint32_t index);

    const RegistryValue* FindValue(RegistryNode& node, const FoldedName& name);
    std::uint32_t ValueCount(RegistryNode& node);
    // In the order of their coming. Null past the end.
    const RegistryValue* ValueAt(RegistryNode& node, std::uint32_t index);

    // The counts and lengths of the key. The lengths are high-water marks, as the kernel's are.
    KeyInfo Info(RegistryNode& node);
    // The self-relative security descriptor that the key's source has for it; empty without one.
    std::span<const std::byte> Security(const RegistryNode& node) const {
        return node.source < m_sources.size() && node.sourceNode != 0
                   ? m_sources[node.source]->ReadSecurity(node.sourceNode)
                   : std::span<const std::byte>();
    }
    // True when the source of the key is damaged at this key.
    bool IsDamaged(RegistryNode& node);

    // The child of that name, made when there is none.
    RegistryNode& MakeChild(RegistryNode& node, const FoldedName& name);
    void SetValue(RegistryNode& node, const FoldedName& name, std::uint32_t type, const void* data, std::uint32_t size);
    bool DeleteValue(RegistryNode& node, const FoldedName& name);
    // Takes a key with all that is below it out of the tree. The roots cannot go.
    void Delete(RegistryNode& node);
    // Deletes what is in the key.
    void Clear(RegistryNode& node);
    // Moves a key to another name below its parent; no key of that name may be there.
    void Rename(RegistryNode& node, const FoldedName& name);

    // Lays the whole tree out anew, in the order in which a walk reads it, and lets go of all that was outgrown or
    // deleted. For a tree that is made: every pointer into it is void from then on, but for kept, a key that goes on
    // pointing to itself.
    void Settle(RegistryNode*& kept);

    // Lets node stand for key number sourceNode of a source, to be read when first asked for. What was in it goes.
    std::uint16_t AddSource(std::unique_ptr<IRegistryNodeSource> source);
    void SetPending(RegistryNode& node, std::uint16_t source, std::uint32_t sourceNode);

  private:
    friend class RegistryFiller;
    class Settler;

    void EnsureFilled(RegistryNode& node) {
        if (node.fill.load(std::memory_order_acquire) == FillState::Pending) Fill(node);
    }
    auto Before() const noexcept {
        return [lowerCase = m_lowerCaseOrder](const RegistryNode* a, const RegistryNode* b) noexcept {
            return lowerCase ? CompareNoCase(a->Name(), b->Name()) < 0 : a->Folded() < b->Folded();
        };
    }
    void Fill(RegistryNode& node);
    void OrderChildren(RegistryNode& node);
    void OrderValues(RegistryNode& node);
    RegistryNode& AddChild(RegistryNode& node, const FoldedName& name);
    void LinkChild(RegistryNode& node, RegistryNode& child);
    void UnlinkChild(RegistryNode& child);
    void GrowChildren(RegistryNode& node);
    void GrowValues(RegistryNode& node);
    void PutValue(RegistryNode& node, const FoldedName& name, std::uint32_t type, const void* data, std::uint32_t size);
    void SetName(RegistryNode& node, const FoldedName& name);
    static void Empty(RegistryNode& node);

    const std::uint64_t m_seed;
    bool m_lowerCaseOrder = false;
    Arena m_arena;  // written with the tree held alone, or under m_onDemand
    RegistryNode* m_machine;
    RegistryNode* m_users;
    SharedNames m_names;  // of values; as the arena
    std::vector<std::unique_ptr<IRegistryNodeSource>> m_sources;
    Mutex m_onDemand;  // for what reading makes: the content of pending keys, orders
};

// What a source adds to a key that is being filled.
class RegistryFiller {
  public:
    explicit RegistryFiller(RegistryTree& tree) : m_tree(tree) {}

    // The first of several subkeys or values of one name counts, the later ones are dropped.
    void AddChild(RegistryNode& node, std::u16string_view name, std::uint32_t sourceNode, bool link);
    void AddValue(RegistryNode& node, std::u16string_view name, std::uint32_t type, const void* data,
                  std::uint32_t size);

  private:
    RegistryTree& m_tree;
};

}  // namespace roundup
