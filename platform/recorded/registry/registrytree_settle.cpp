// Laying a tree out for reading.
//
// A source fills its keys in its own order, arrays grow from place to place, and a walk in the order of names then
// touches a dozen places of the memory for each key, none of which the processor expects. So a tree that is filled is
// copied once into memory of its own, each key in one piece and the keys in the order of a walk:
//
//     node | its name | values | their hashes | their data | subkeys | their hashes | first subkey: node | its name ...
//
// A walk then reads the memory from its start to its end, and a lookup meets the name behind the node. The copy is
// made beside the old tree, which stays whole when memory is short.
#include <algorithm>
#include <span>
#include <utility>

#include "platform/recorded/registry/positionindex.h"
#include "platform/recorded/registry/registrytree.h"

namespace roundup {

class RegistryTree::Settler {
  public:
    Settler(const RegistryTree& tree, const RegistryNode* kept) : m_tree(tree), m_kept(kept) {}

    // The root's copy with all that is below it; without recursion, since the depth is the source's choice.
    RegistryNode* CopyAll(RegistryNode& root) {
        RegistryNode* top = nullptr;
        m_open.push_back({&root, nullptr, &top});
        while (!m_open.empty()) {
            const Pending next = m_open.back();
            m_open.pop_back();
            *next.place = &Copy(*next.node, next.parent);
        }
        return top;
    }
    RegistryNode* Kept() const noexcept { return m_keptCopy; }
    void Swap(Arena& arena, SharedNames& names) noexcept {
        m_arena.Swap(arena);
        std::swap(m_names, names);
    }

  private:
    struct Pending {
        RegistryNode* node;
        RegistryNode* parent;  // the copy
        RegistryNode** place;  // where the copy is noted
    };

    RegistryNode& Copy(RegistryNode& node, RegistryNode* parent) {
        RegistryNode& copy = *m_arena.Make<RegistryNode>();
        if (&node == m_kept) m_keptCopy = &copy;
        copy.parent = parent;
        copy.name = copy.folded = m_arena.CopyText(node.Folded());
        if (node.name != node.folded) copy.name = m_arena.CopyText(node.Name());
        copy.nameLength = node.nameLength;
        copy.hash = node.hash;
        copy.access = node.access;
        copy.link = node.link;
        copy.redirects = node.redirects;
        copy.role = node.role;
        copy.source = node.source;
        copy.sourceNode = node.sourceNode;
        copy.fill.store(node.fill.load(std::memory_order_relaxed), std::memory_order_relaxed);
        copy.longestChild = node.longestChild;
        copy.longestValueName = node.longestValueName;
        copy.longestValueData = node.longestValueData;
        CopyValues(node, copy);
        CopyChildren(node, copy);
        return copy;
    }

    void CopyValues(const RegistryNode& node, RegistryNode& copy) {
        const std::uint32_t count = node.valueCount - node.deletedValues;
        if (count == 0) return;
        Reserve(copy.values, copy.valueIndex, copy.valueCapacity, count);
        std::copy_if(node.values, node.values + node.valueCount, copy.values,
                     [](const RegistryValue& value) { return value.name != nullptr; });
        copy.valueCount = count;
        for (RegistryValue& value : std::span(copy.values, count)) {
            value.data = m_arena.CopyBytes(value.data, value.size);
            value.name = m_names.Get(m_arena, value.Name(), value.hash);
        }
        position_index::Rebuild(copy.valueIndex, copy.valueCapacity, copy.values, count);
    }

    void CopyChildren(RegistryNode& node, RegistryNode& copy) {
        if (node.childCount == 0) return;
        Reserve(copy.children, copy.childIndex, copy.childCapacity, node.childCount);
        std::copy_n(node.children, node.childCount, copy.children);
        if (!node.childrenInOrder) {
            std::sort(copy.children, copy.children + node.childCount,
                      [before = m_tree.Before()](const RegistryChild& a, const RegistryChild& b) {
                          return before(a.node, b.node);
                      });
        }
        copy.childCount = node.childCount;
        position_index::Rebuild(copy.childIndex, copy.childCapacity, copy.children, copy.childCount);
        for (std::uint32_t i = copy.childCount; i-- != 0;) {
            m_open.push_back({copy.children[i].node, &copy, &copy.children[i].node});
        }
    }

    template <class Entry>
    void Reserve(Entry*& entries, std::uint32_t*& index, std::uint32_t& capacity, std::uint32_t count) {
        capacity = position_index::CapacityFor(count);
        entries = m_arena.Reusable<Entry>(capacity);
        index = m_arena.Reusable<std::uint32_t>(position_index::SlotCount(capacity));
    }

    const RegistryTree& m_tree;
    const RegistryNode* const m_kept;
    Arena m_arena;
    SharedNames m_names;
    RegistryNode* m_keptCopy = nullptr;
    std::vector<Pending> m_open;
};

void RegistryTree::Settle(RegistryNode*& kept) {
    Settler settler(*this, kept);
    RegistryNode* const machine = settler.CopyAll(*m_machine);
    RegistryNode* const users = settler.CopyAll(*m_users);
    settler.Swap(m_arena, m_names);
    m_machine = machine;
    m_users = users;
    kept = settler.Kept();
}

}  // namespace roundup
