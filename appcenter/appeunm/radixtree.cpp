#include "appcenter/appeunm/radixtree.h"

#include <algorithm>

#include "utility/casemap.h"

namespace roundup {

void RadixTree::Fold(std::u16string_view text) {
    m_folded.resize(text.size());
    std::ranges::transform(text, m_folded.begin(), [](char16_t c) { return ToUpper(c); });
}

RadixTree::Node RadixTree::Child(Node node, char16_t first) {
    const Node* const child = m_children.Find(ChildKey(node, first));
    return child != nullptr ? *child : kRoot;
}

void RadixTree::Adopt(Node parent, Node child) {
    m_nodes[child].parent = parent;
    m_children.TryAdd(ChildKey(parent, m_labels[m_nodes[child].label]), child).first = child;
}

// The new node takes the upper part of the edge, and its place among the siblings.
RadixTree::Node RadixTree::Split(const Place& place) {
    const auto middle = static_cast<Node>(m_nodes.size());
    const Node parent = m_nodes[place.node].parent;
    Edge upper = m_nodes[place.node];
    upper.length = place.inEdge;
    upper.firstChild = place.node;
    m_nodes.push_back(upper);
    Node* link = &m_nodes[parent].firstChild;
    while (*link != place.node) link = &m_nodes[*link].nextSibling;
    *link = middle;
    Edge& lower = m_nodes[place.node];
    lower.label += place.inEdge;
    lower.length -= place.inEdge;
    lower.nextSibling = kRoot;
    Adopt(parent, middle);
    Adopt(middle, place.node);
    return middle;
}

RadixTree::Added RadixTree::Add(std::u16string_view text) {
    const Place place = Walk(text, [](Node, std::size_t) {});
    Added added{place.node, kRoot, kRoot};
    if (!IsAtNode(place)) {
        added.lower = place.node;
        added.middle = added.node = Split(place);
    }
    if (place.done == m_folded.size()) return added;
    const auto leaf = static_cast<Node>(m_nodes.size());
    m_nodes.push_back(
        {m_labels.size(), m_folded.size() - place.done, added.node, kRoot, m_nodes[added.node].firstChild});
    m_nodes[added.node].firstChild = leaf;
    m_labels.append(m_folded, place.done);
    Adopt(added.node, leaf);
    added.node = leaf;
    return added;
}

}  // namespace roundup
