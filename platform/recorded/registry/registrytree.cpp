#include "platform/recorded/registry/registrytree.h"

#include <algorithm>
#include <cstring>

#include "platform/recorded/hostfs.h"
#include "platform/recorded/registry/positionindex.h"

namespace roundup {

namespace {

// Without a source of randomness the address serves, which differs from run to run on most systems.
std::uint64_t RandomSeed() {
    std::uint64_t seed = 0;
    if (!HostRandom(&seed, sizeof seed)) seed = reinterpret_cast<std::uintptr_t>(&seed);
    return seed;
}

std::optional<std::uint32_t> FindChildPosition(const RegistryNode& node, const FoldedName& name) noexcept {
    return position_index::Find(node.childIndex, node.childCapacity, node.children, node.childCount, name.Hash(),
                                [&name](const RegistryChild& child) {
                                    // In a settled tree the name stands behind the node: it comes along with it.
                                    __builtin_prefetch(child.node + 1);
                                    return EqualsExactly(child.node->Folded(), name.Text());
                                });
}

std::optional<std::uint32_t> FindValuePosition(const RegistryNode& node, const FoldedName& name) noexcept {
    return position_index::Find(
        node.valueIndex, node.valueCapacity, node.values, node.valueCount, name.Hash(),
        [&name](const RegistryValue& value) { return value.name != nullptr && name.Matches(value.Name()); });
}

// Enumerations go on with the next key, which lies anywhere in memory: what is read of it first is on its way by then.
void PrefetchFor(RegistryNode* const* enumerated) noexcept {
    const RegistryNode* const next = enumerated[1];
    __builtin_prefetch(enumerated[2]);
    __builtin_prefetch(&enumerated[2]->fill);
    if (next->fill.load(std::memory_order_acquire) == FillState::Pending) return;
    __builtin_prefetch(next->folded);
    __builtin_prefetch(next->valueIndex);
    if (next->valueCount != 0) {
        __builtin_prefetch(&next->values[0]);
        __builtin_prefetch(&next->values[next->valueCount / 2]);
    }
}

// Moves an array with its index to a larger one.
template <class Entry>
void Grow(Arena& arena, Entry*& entries, std::uint32_t*& index, std::uint32_t& capacity, std::uint32_t count) {
    const std::uint32_t larger = position_index::NextCapacity(capacity);
    Entry* const newEntries = arena.Reusable<Entry>(larger);
    std::uint32_t* const newIndex = arena.Reusable<std::uint32_t>(position_index::SlotCount(larger));
    std::copy_n(entries, count, newEntries);
    position_index::Rebuild(newIndex, larger, newEntries, count);
    arena.Return(entries, capacity);
    arena.Return(index, position_index::SlotCount(capacity));
    entries = newEntries;
    index = newIndex;
    capacity = larger;
}

// Marks all that lies below the key, without recursion: the depth is the source's choice.
void MarkDeletedBelow(RegistryNode& top) {
    std::vector<RegistryNode*> open{&top};
    while (!open.empty()) {
        RegistryNode* const node = open.back();
        open.pop_back();
        for (std::uint32_t i = 0; i < node->childCount; ++i) {
            node->children[i].node->deleted = true;
            open.push_back(node->children[i].node);
        }
    }
}

}  // namespace

RegistryTree::RegistryTree() : m_seed(RandomSeed()) {
    m_machine = m_arena.Make<RegistryNode>();
    SetName(*m_machine, Fold(u"HKEY_LOCAL_MACHINE"));
    m_machine->role = {KeyRole::Kind::Machine, 0};
    m_users = m_arena.Make<RegistryNode>();
    SetName(*m_users, Fold(u"HKEY_USERS"));
    m_users->role = {KeyRole::Kind::Users, 0};
}

RegistryNode* RegistryTree::FindChild(RegistryNode& node, const FoldedName& name) {
    EnsureFilled(node);
    const auto position = FindChildPosition(node, name);
    return position ? node.children[*position].node : nullptr;
}

std::uint32_t RegistryTree::ChildCount(RegistryNode& node) {
    EnsureFilled(node);
    return node.childCount;
}

RegistryNode* RegistryTree::ChildAt(RegistryNode& node, std::uint32_t index) {
    EnsureFilled(node);
    if (index >= node.childCount) return nullptr;
    if (node.childrenInOrder) return node.children[index].node;
    if (!node.childOrderReady.load(std::memory_order_acquire)) OrderChildren(node);
    RegistryNode* const* const at = node.childOrder + index;
    if (node.childCount - index > 2) PrefetchFor(at);
    return *at;
}

const RegistryValue* RegistryTree::FindValue(RegistryNode& node, const FoldedName& name) {
    EnsureFilled(node);
    const auto position = FindValuePosition(node, name);
    return position ? &node.values[*position] : nullptr;
}

std::uint32_t RegistryTree::ValueCount(RegistryNode& node) {
    EnsureFilled(node);
    return node.valueCount - node.deletedValues;
}

const RegistryValue* RegistryTree::ValueAt(RegistryNode& node, std::uint32_t index) {
    EnsureFilled(node);
    if (index >= node.valueCount - node.deletedValues) return nullptr;
    if (node.deletedValues == 0) return &node.values[index];
    if (!node.valueOrderReady.load(std::memory_order_acquire)) OrderValues(node);
    return &node.values[node.valueOrder[index]];
}

KeyInfo RegistryTree::Info(RegistryNode& node) {
    EnsureFilled(node);
    return {node.childCount, node.longestChild, node.valueCount - node.deletedValues, node.longestValueName,
            node.longestValueData};
}

bool RegistryTree::IsDamaged(RegistryNode& node) {
    EnsureFilled(node);
    return node.fill.load(std::memory_order_relaxed) == FillState::Damaged;
}

RegistryNode& RegistryTree::MakeChild(RegistryNode& node, const FoldedName& name) {
    if (RegistryNode* const child = FindChild(node, name)) return *child;
    return AddChild(node, name);
}

void RegistryTree::SetValue(RegistryNode& node, const FoldedName& name, std::uint32_t type, const void* data,
                            std::uint32_t size) {
    EnsureFilled(node);
    PutValue(node, name, type, data, size);
}

bool RegistryTree::DeleteValue(RegistryNode& node, const FoldedName& name) {
    EnsureFilled(node);
    const auto position = FindValuePosition(node, name);
    if (!position) return false;
    node.values[*position].name = nullptr;
    ++node.deletedValues;
    node.valueOrderReady.store(false, std::memory_order_relaxed);
    // Closing the gaps only once half are gone keeps many deletions from moving the rest each time.
    if (node.deletedValues * 2 > node.valueCount) {
        RegistryValue* const end = node.values + node.valueCount;
        RegistryValue* const live =
            std::remove_if(node.values, end, [](const RegistryValue& value) { return value.name == nullptr; });
        node.valueCount = static_cast<std::uint32_t>(live - node.values);
        node.deletedValues = 0;
        position_index::Rebuild(node.valueIndex, node.valueCapacity, node.values, node.valueCount);
    }
    return true;
}

void RegistryTree::Delete(RegistryNode& node) {
    if (node.parent == nullptr || node.deleted) return;
    MarkDeletedBelow(node);
    UnlinkChild(node);
    node.deleted = true;
}

void RegistryTree::Clear(RegistryNode& node) {
    MarkDeletedBelow(node);
    Empty(node);
    node.fill.store(FillState::Filled, std::memory_order_release);
}

void RegistryTree::Rename(RegistryNode& node, const FoldedName& name) {
    RegistryNode& parent = *node.parent;
    UnlinkChild(node);
    SetName(node, name);
    LinkChild(parent, node);
}

std::uint16_t RegistryTree::AddSource(std::unique_ptr<IRegistryNodeSource> source) {
    m_sources.push_back(std::move(source));
    return static_cast<std::uint16_t>(m_sources.size() - 1);
}

void RegistryTree::SetPending(RegistryNode& node, std::uint16_t source, std::uint32_t sourceNode) {
    Clear(node);
    node.link = false;
    node.source = source;
    node.sourceNode = sourceNode;
    node.fill.store(FillState::Pending, std::memory_order_release);
}

void RegistryTree::Fill(RegistryNode& node) {
    const std::lock_guard guard(m_onDemand);
    if (node.fill.load(std::memory_order_relaxed) != FillState::Pending) return;
    Empty(node);  // what an attempt left that ran out of memory
    RegistryFiller filler(*this);
    const bool whole = m_sources[node.source]->Fill(filler, node);
    if (!whole) Empty(node);
    node.fill.store(whole ? FillState::Filled : FillState::Damaged, std::memory_order_release);
}

void RegistryTree::OrderChildren(RegistryNode& node) {
    const std::lock_guard guard(m_onDemand);
    if (node.childOrderReady.load(std::memory_order_relaxed)) return;
    if (node.childOrderCapacity < node.childCount) {
        node.childOrder = m_arena.Array<RegistryNode*>(node.childCapacity);
        node.childOrderCapacity = node.childCapacity;
    }
    for (std::uint32_t i = 0; i < node.childCount; ++i) node.childOrder[i] = node.children[i].node;
    std::sort(node.childOrder, node.childOrder + node.childCount, Before());
    node.childOrderReady.store(true, std::memory_order_release);
}

void RegistryTree::OrderValues(RegistryNode& node) {
    const std::lock_guard guard(m_onDemand);
    if (node.valueOrderReady.load(std::memory_order_relaxed)) return;
    if (node.valueOrderCapacity < node.valueCapacity) {
        node.valueOrder = m_arena.Array<std::uint32_t>(node.valueCapacity);
        node.valueOrderCapacity = node.valueCapacity;
    }
    std::uint32_t live = 0;
    for (std::uint32_t i = 0; i < node.valueCount; ++i) {
        if (node.values[i].name != nullptr) node.valueOrder[live++] = i;
    }
    node.valueOrderReady.store(true, std::memory_order_release);
}

RegistryNode& RegistryTree::AddChild(RegistryNode& node, const FoldedName& name) {
    RegistryNode& child = *m_arena.Make<RegistryNode>();
    SetName(child, name);
    child.role = RoleOfChild(node.role, name.Original());
    LinkChild(node, child);
    return child;
}

void RegistryTree::LinkChild(RegistryNode& node, RegistryNode& child) {
    if (node.childCount == node.childCapacity) GrowChildren(node);
    child.parent = &node;
    if (node.childrenInOrder && node.childCount != 0) {
        node.childrenInOrder = Before()(node.children[node.childCount - 1].node, &child);
    }
    // An order that was asked for once is kept up; until then, adding costs nothing.
    if (node.childOrderReady.load(std::memory_order_relaxed)) {
        if (node.childOrderCapacity > node.childCount) {
            RegistryNode** const end = node.childOrder + node.childCount;
            RegistryNode** const at = std::upper_bound(node.childOrder, end, &child, Before());
            std::move_backward(at, end, end + 1);
            *at = &child;
        } else {
            node.childOrderReady.store(false, std::memory_order_relaxed);
        }
    }
    node.children[node.childCount] = {&child, child.hash};
    position_index::Put(node.childIndex, node.childCapacity, child.hash, node.childCount);
    ++node.childCount;
    if (child.Folded() == u"WOW6432NODE") node.redirects = true;
    node.longestChild = std::max(node.longestChild, child.nameLength);
}

void RegistryTree::UnlinkChild(RegistryNode& child) {
    RegistryNode& node = *child.parent;
    const auto found = position_index::Find(node.childIndex, node.childCapacity, node.children, node.childCount,
                                            child.hash, [&child](const RegistryChild& c) { return c.node == &child; });
    if (!found) return;
    const std::uint32_t position = *found;
    const std::uint32_t last = node.childCount - 1;
    if (node.childOrderReady.load(std::memory_order_relaxed)) {
        RegistryNode** const end = node.childOrder + node.childCount;
        RegistryNode** const at = std::lower_bound(node.childOrder, end, &child, Before());
        std::move(at + 1, end, at);
    }
    position_index::MoveLast(node.childIndex, node.childCapacity, node.children, position, last);
    if (position != last) {
        node.children[position] = node.children[last];
        node.childrenInOrder = false;
    }
    node.childCount = last;
}

void RegistryTree::GrowChildren(RegistryNode& node) {
    Grow(m_arena, node.children, node.childIndex, node.childCapacity, node.childCount);
}

void RegistryTree::GrowValues(RegistryNode& node) {
    Grow(m_arena, node.values, node.valueIndex, node.valueCapacity, node.valueCount);
}

void RegistryTree::PutValue(RegistryNode& node, const FoldedName& name, std::uint32_t type, const void* data,
                            std::uint32_t size) {
    node.longestValueData = std::max(node.longestValueData, size);
    if (const auto position = FindValuePosition(node, name)) {
        RegistryValue& value = node.values[*position];
        if (size > value.size) {
            value.data = m_arena.CopyBytes(data, size);
        } else if (size != 0) {
            std::memmove(value.data, data, size);  // the data may be the value's own
        }
        value.type = type;
        value.size = size;
        return;
    }
    if (node.valueCount == node.valueCapacity) GrowValues(node);
    RegistryValue value;
    value.name = m_names.Get(m_arena, name.Original(), name.Hash());
    value.data = m_arena.CopyBytes(data, size);
    value.nameLength = static_cast<std::uint32_t>(name.Original().size());
    value.hash = name.Hash();
    value.type = type;
    value.size = size;
    node.values[node.valueCount] = value;
    position_index::Put(node.valueIndex, node.valueCapacity, value.hash, node.valueCount);
    ++node.valueCount;
    node.longestValueName = std::max(node.longestValueName, value.nameLength);
    node.valueOrderReady.store(false, std::memory_order_relaxed);
}

void RegistryTree::SetName(RegistryNode& node, const FoldedName& name) {
    const char16_t* const text = m_arena.CopyText(name.Original());
    node.folded = name.IsOriginal() ? text : m_arena.CopyText(name.Text());
    node.name = text;
    node.nameLength = static_cast<std::uint32_t>(name.Original().size());
    node.hash = name.Hash();
}

void RegistryTree::Empty(RegistryNode& node) {
    node.children = nullptr;
    node.childIndex = nullptr;
    node.childCount = node.childCapacity = 0;
    node.childrenInOrder = true;
    node.childOrderReady.store(false, std::memory_order_relaxed);
    node.values = nullptr;
    node.valueIndex = nullptr;
    node.valueCount = node.valueCapacity = node.deletedValues = 0;
    node.valueOrderReady.store(false, std::memory_order_relaxed);
    node.longestChild = node.longestValueName = node.longestValueData = 0;
}

void RegistryFiller::AddChild(RegistryNode& node, std::u16string_view name, std::uint32_t sourceNode, bool link) {
    const FoldedName folded = m_tree.Fold(name);
    if (FindChildPosition(node, folded)) return;
    RegistryNode& child = m_tree.AddChild(node, folded);
    child.source = node.source;
    child.sourceNode = sourceNode;
    child.link = link;
    child.fill.store(FillState::Pending, std::memory_order_relaxed);
}

void RegistryFiller::AddValue(RegistryNode& node, std::u16string_view name, std::uint32_t type, const void* data,
                              std::uint32_t size) {
    const FoldedName folded = m_tree.Fold(name);
    if (FindValuePosition(node, folded)) return;
    m_tree.PutValue(node, folded, type, data, size);
}

}  // namespace roundup
