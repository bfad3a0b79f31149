// Finds the first text of a list that another text starts with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// Texts, each with the position of its owner in a list; all questions ask for the smallest position and ignore case.
// Texts may be added at any time, in any order. Used by one thread.
//
// A radix tree: an edge has a piece of text, a node stands for the text from the root to it. "C:\Tool" at position 4
// and "C:\Toys" at 2 make
//
//     root --"C:\TO"--> (below 2) --"OL"--> (own 4, below 4)
//                                 --"YS"--> (own 2, below 2)
//
// The texts that a question's text starts with are the nodes that its own way down passes, and those that start with
// it are what lies below the place where it ends; so one walk, as long as the text, answers every question.
class PrefixIndex {
  public:
    PrefixIndex() : m_nodes(1) {}

    // An empty text is not added.
    void Add(std::u16string_view text, std::size_t position);

    // Of the texts that text starts with, whatever character follows.
    std::size_t FirstPrefixOf(std::u16string_view text);
    // Of the folders that are text, lie above it or lie in it: the longer path goes on with a backslash.
    std::size_t FirstSameFolder(std::u16string_view text);
    // Of the texts that equal text over the length of the shorter of the two.
    std::size_t FirstOverlap(std::u16string_view text);

  private:
    struct Node {
        std::size_t label = 0;  // where the text of the edge that leads here begins in m_labels
        std::size_t length = 0;
        std::size_t own = kNoPosition;    // of the text that ends here
        std::size_t below = kNoPosition;  // the smallest here and below
    };
    using NodeNumber = std::uint32_t;
    static constexpr NodeNumber kNoNode = 0;  // the root is nobody's child

    // Where a walk has come to: length characters into the edge that leads to node, the whole edge included.
    struct Place {
        NodeNumber node = 0;
        std::size_t inEdge = 0;
        std::size_t done = 0;  // characters of the text
    };

    void Fold(std::u16string_view text);
    NodeNumber Child(NodeNumber node, char16_t first) const;
    void SetChild(NodeNumber node, char16_t first, NodeNumber child);
    bool IsAtNode(const Place& place) const { return place.inEdge == m_nodes[place.node].length; }
    // Follows m_folded as far as the tree has it; pass(node, characters done) at every node on the way.
    template <class Pass>
    Place Walk(Pass pass) const;
    // Makes a node where a walk has ended inside an edge.
    NodeNumber Split(const Place& place, NodeNumber parent);

    std::vector<Node> m_nodes;
    std::u16string m_labels;
    std::unordered_map<std::uint64_t, NodeNumber> m_children;  // by parent and first character of the edge
    std::u16string m_folded;                                   // the text in hand
};

}  // namespace roundup
