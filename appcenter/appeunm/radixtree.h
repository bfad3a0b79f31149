// Texts in a tree by what they begin with, ignoring case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "utility/flatmap.h"

namespace roundup {

// An edge has a piece of text, a node stands for the text from the root to it. "C:\Tool" and "C:\Toys" make
//
//     root --"C:\TO"--> 3 --"OL"--> 1
//                         --"YS"--> 2
//
// The texts that another text starts with are the nodes that its own way down passes, and those that start with it lie
// below the place where that way ends; so one walk, as long as the text, answers every question. Texts may be added at
// any time. Used by one thread.
class RadixTree {
  public:
    using Node = std::uint32_t;
    static constexpr Node kRoot = 0;

    // Where a walk has come to: inEdge characters into the edge that leads to node, the whole edge included.
    struct Place {
        Node node = kRoot;
        std::size_t inEdge = 0;
        std::size_t done = 0;  // characters of the text
    };
    struct Added {
        Node node = kRoot;  // of the text
        // A node that was put into an edge on the way, and the one below it that the edge led to; both 0 without one.
        Node middle = kRoot;
        Node lower = kRoot;
    };

    RadixTree() : m_nodes(1) {}

    Added Add(std::u16string_view text);
    // Follows the text as far as the tree has it; calls pass(node, characters done) at every node on the way.
    template <class Pass>
    Place Walk(std::u16string_view text, Pass pass);

    std::size_t Count() const noexcept { return m_nodes.size(); }
    Node Parent(Node node) const { return m_nodes[node].parent; }
    // The root, which is nobody's child, when there is none. The children of a node are chained.
    Node Child(Node node, char16_t first);
    Node FirstChild(Node node) const { return m_nodes[node].firstChild; }
    Node NextSibling(Node node) const { return m_nodes[node].nextSibling; }
    bool IsAtNode(const Place& place) const { return place.inEdge == m_nodes[place.node].length; }
    // The next character of an edge that a walk has ended inside of.
    char16_t NextInEdge(const Place& place) const { return m_labels[m_nodes[place.node].label + place.inEdge]; }

    // The text of the last question or addition, in upper case.
    std::u16string_view Folded() const noexcept { return m_folded; }

  private:
    struct Edge {
        std::size_t label = 0;  // where the text of the edge that leads here begins in m_labels
        std::size_t length = 0;
        Node parent = kRoot;
        Node firstChild = kRoot;
        Node nextSibling = kRoot;
    };
    struct KeyHash {
        std::size_t operator()(std::uint64_t key) const noexcept { return static_cast<std::size_t>(key); }
    };
    struct KeyEqual {
        bool operator()(std::uint64_t a, std::uint64_t b) const noexcept { return a == b; }
    };

    static std::uint64_t ChildKey(Node node, char16_t first) noexcept { return (std::uint64_t{node} << 16) | first; }
    void Fold(std::u16string_view text);
    template <class Pass>
    Place WalkFolded(Pass pass);
    Node Split(const Place& place);
    void Adopt(Node parent, Node child);

    std::vector<Edge> m_nodes;
    std::u16string m_labels;
    FlatMap<std::uint64_t, Node, KeyHash, KeyEqual> m_children;  // by parent and first character of the edge
    std::u16string m_folded;
};

template <class Pass>
RadixTree::Place RadixTree::WalkFolded(Pass pass) {
    Place place;
    const std::u16string_view text = m_folded;
    const std::u16string_view labels = m_labels;
    while (place.done < text.size()) {
        const Node child = Child(place.node, text[place.done]);
        if (child == kRoot) break;
        const std::u16string_view edge = labels.substr(m_nodes[child].label, m_nodes[child].length);
        std::size_t same = 1;
        while (same < edge.size() && place.done + same < text.size() && edge[same] == text[place.done + same]) ++same;
        place = {child, same, place.done + same};
        if (!IsAtNode(place)) break;
        pass(child, place.done);
    }
    return place;
}

template <class Pass>
RadixTree::Place RadixTree::Walk(std::u16string_view text, Pass pass) {
    Fold(text);
    return WalkFolded(pass);
}

}  // namespace roundup
