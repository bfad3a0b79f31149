#include "appcenter/appeunm/prefixindex.h"

#include <algorithm>

#include "utility/casemap.h"

namespace roundup {
namespace {

constexpr std::uint64_t ChildKey(std::uint32_t node, char16_t first) noexcept {
    return (std::uint64_t{node} << 16) | first;
}

}  // namespace

void PrefixIndex::Fold(std::u16string_view text) {
    m_folded.resize(text.size());
    std::ranges::transform(text, m_folded.begin(), [](char16_t c) { return ToUpper(c); });
}

PrefixIndex::NodeNumber PrefixIndex::Child(NodeNumber node, char16_t first) const {
    const auto at = m_children.find(ChildKey(node, first));
    return at != m_children.end() ? at->second : kNoNode;
}

void PrefixIndex::SetChild(NodeNumber node, char16_t first, NodeNumber child) {
    m_children[ChildKey(node, first)] = child;
}

template <class Pass>
PrefixIndex::Place PrefixIndex::Walk(Pass pass) const {
    Place place;
    const std::u16string_view text = m_folded;
    const std::u16string_view labels = m_labels;
    while (place.done < text.size()) {
        const NodeNumber child = Child(place.node, text[place.done]);
        if (child == kNoNode) break;
        const std::u16string_view edge = labels.substr(m_nodes[child].label, m_nodes[child].length);
        const std::u16string_view rest = text.substr(place.done);
        const auto same = std::ranges::mismatch(edge, rest).in1 - edge.begin();
        place = {child, static_cast<std::size_t>(same), place.done + static_cast<std::size_t>(same)};
        if (!IsAtNode(place)) break;
        pass(child, place.done);
    }
    return place;
}

PrefixIndex::NodeNumber PrefixIndex::Split(const Place& place, NodeNumber parent) {
    const auto middle = static_cast<NodeNumber>(m_nodes.size());
    Node node = m_nodes[place.node];
    node.length = place.inEdge;
    node.own = kNoPosition;
    m_nodes.push_back(node);
    Node& lower = m_nodes[place.node];
    lower.label += place.inEdge;
    lower.length -= place.inEdge;
    SetChild(parent, m_labels[node.label], middle);
    SetChild(middle, m_labels[lower.label], place.node);
    return middle;
}

void PrefixIndex::Add(std::u16string_view text, std::size_t position) {
    if (text.empty()) return;
    Fold(text);
    NodeNumber above = 0;  // the last whole node
    const Place place = Walk([&](NodeNumber node, std::size_t) {
        m_nodes[node].below = std::min(m_nodes[node].below, position);
        above = node;
    });
    NodeNumber end = IsAtNode(place) ? place.node : Split(place, above);
    if (place.done < m_folded.size()) {
        const auto leaf = static_cast<NodeNumber>(m_nodes.size());
        m_nodes.push_back({m_labels.size(), m_folded.size() - place.done, kNoPosition, kNoPosition});
        m_labels.append(m_folded, place.done);
        SetChild(end, m_folded[place.done], leaf);
        m_nodes[end].below = std::min(m_nodes[end].below, position);
        end = leaf;
    }
    m_nodes[end].own = std::min(m_nodes[end].own, position);
    m_nodes[end].below = std::min(m_nodes[end].below, position);
}

std::size_t PrefixIndex::FirstPrefixOf(std::u16string_view text) {
    Fold(text);
    std::size_t first = kNoPosition;
    Walk([&](NodeNumber node, std::size_t) { first = std::min(first, m_nodes[node].own); });
    return first;
}

std::size_t PrefixIndex::FirstSameFolder(std::u16string_view text) {
    Fold(text);
    std::size_t first = kNoPosition;
    const Place place = Walk([&](NodeNumber node, std::size_t done) {
        if (done == m_folded.size() || m_folded[done] == u'\\') first = std::min(first, m_nodes[node].own);
    });
    if (place.done < m_folded.size()) return first;
    if (!IsAtNode(place)) {
        const bool goesOn = m_labels[m_nodes[place.node].label + place.inEdge] == u'\\';
        return goesOn ? std::min(first, m_nodes[place.node].below) : first;
    }
    const NodeNumber inside = Child(place.node, u'\\');
    return inside != kNoNode ? std::min(first, m_nodes[inside].below) : first;
}

std::size_t PrefixIndex::FirstOverlap(std::u16string_view text) {
    Fold(text);
    std::size_t first = kNoPosition;
    const Place place = Walk([&](NodeNumber node, std::size_t) { first = std::min(first, m_nodes[node].own); });
    return place.done == m_folded.size() ? std::min(first, m_nodes[place.node].below) : first;
}

}  // namespace roundup
