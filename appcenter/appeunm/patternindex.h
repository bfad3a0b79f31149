// Finds the first list position one of whose patterns occurs in a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// Each pattern has the position of its owner in a list; occurring is what ContainsNoCase says. All patterns are added
// before the first question. Used by one thread.
//
// The automaton of Aho and Corasick (Efficient string matching, 1975): a tree of the patterns' characters, in which
// every node also knows the node of its longest proper ending that is in the tree. A text runs through it once,
// falling back along these links where the tree does not go on, and at each character stands at the longest piece of
// a pattern that ends there; the patterns that end there are those of the node and of its links, whose smallest
// position is worked out beforehand. So the cost is that of the text, however many patterns there are.
class PatternIndex {
  public:
    PatternIndex() : m_nodes(1) {}

    // An empty pattern occurs nowhere.
    void Add(std::u16string_view pattern, std::size_t position);
    // The smallest position; kNoPosition without one.
    std::size_t First(std::u16string_view text);

  private:
    using NodeNumber = std::uint32_t;
    struct Node {
        NodeNumber parent = 0;
        NodeNumber fallback = 0;
        std::uint32_t depth = 0;
        char16_t letter = 0;
        std::size_t best = kNoPosition;
    };

    NodeNumber Child(NodeNumber node, char16_t letter) const;
    // The node after letter, falling back from node as far as needed.
    NodeNumber Next(NodeNumber node, char16_t letter) const;
    void Link();

    std::vector<Node> m_nodes;
    std::unordered_map<std::uint64_t, NodeNumber> m_children;  // by parent and letter
    bool m_linked = false;
};

}  // namespace roundup
