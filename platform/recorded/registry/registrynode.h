// One key of a registry that lies in memory, laid out for looking up.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/recorded/registry/wow64rules.h"

namespace roundup {

struct RegistryNode;

struct RegistryValue {
    const char16_t* name = nullptr;  // null: deleted
    std::byte* data = nullptr;
    std::uint32_t nameLength = 0;  // characters
    std::uint32_t hash = 0;
    std::uint32_t type = 0;
    std::uint32_t size = 0;  // bytes

    std::u16string_view Name() const noexcept { return {name, nameLength}; }
};

struct RegistryChild {
    RegistryNode* node = nullptr;
    std::uint32_t hash = 0;
};

// Who may open a key.
enum class KeyAccess : std::uint8_t { Full, ReadOnly, Denied };

// Where the content of a key stands that is read from its source when it is first asked for.
enum class FillState : std::uint8_t { Filled, Pending, Damaged };

// Everything that a node points to lies in the arena of its tree. What is atomic may be written while others read;
// the rest is written by a tree that nobody reads at that time, or before fill is set to Filled.
struct RegistryNode {
    // What a walk along a path reads comes first, in one cache line.
    const char16_t* folded = nullptr;  // upper-cased name
    std::uint32_t nameLength = 0;      // characters
    std::uint32_t hash = 0;
    std::atomic<FillState> fill = FillState::Filled;
    KeyAccess access = KeyAccess::Full;
    bool link = false;       // symbolic link, its target in the value SymbolicLinkValue
    bool deleted = false;    // no longer in the tree, but a handle may still name it
    bool redirects = false;  // has a subkey Wow6432Node
    bool childrenInOrder = true;
    KeyRole role;
    RegistryChild* children = nullptr;    // in the order of their coming until one goes
    std::uint32_t* childIndex = nullptr;  // finds positions in children, see positionindex.h
    std::uint32_t childCount = 0;
    std::uint32_t childCapacity = 0;
    RegistryValue* values = nullptr;      // in the order of their coming, deleted ones among them
    std::uint32_t* valueIndex = nullptr;  // as childIndex
    std::uint32_t valueCount = 0;         // deleted ones among them
    std::uint32_t valueCapacity = 0;

    const char16_t* name = nullptr;
    RegistryNode* parent = nullptr;
    // What enumerations answer from, made when first asked for and valid while the flag says so. Not needed as long
    // as children stand in order by themselves and no value is deleted.
    RegistryNode** childOrder = nullptr;
    std::uint32_t* valueOrder = nullptr;
    std::uint32_t childOrderCapacity = 0;
    std::uint32_t valueOrderCapacity = 0;
    std::atomic<bool> childOrderReady = false;
    std::atomic<bool> valueOrderReady = false;
    std::uint16_t source = 0;      // index of the source in the tree, for Pending
    std::uint32_t sourceNode = 0;  // number of this key in its source, for Pending

    std::uint32_t deletedValues = 0;
    // High-water marks, as the kernel keeps them: they do not shrink.
    std::uint32_t longestChild = 0;
    std::uint32_t longestValueName = 0;
    std::uint32_t longestValueData = 0;

    std::u16string_view Name() const noexcept { return {name, nameLength}; }
    std::u16string_view Folded() const noexcept { return {folded, nameLength}; }
};

}  // namespace roundup
