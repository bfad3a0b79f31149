#include "appcenter/appeunm/prefixindex.h"

#include <algorithm>

namespace roundup {

void PrefixIndex::Add(std::u16string_view text, std::size_t position) {
    if (text.empty()) return;
    const RadixTree::Added added = m_tree.Add(text);
    m_positions.resize(m_tree.Count());
    if (added.middle != RadixTree::kRoot) m_positions[added.middle].below = m_positions[added.lower].below;
    m_positions[added.node].own = std::min(m_positions[added.node].own, position);
    for (RadixTree::Node node = added.node; node != RadixTree::kRoot; node = m_tree.Parent(node)) {
        m_positions[node].below = std::min(m_positions[node].below, position);
    }
}

std::size_t PrefixIndex::FirstPrefixOf(std::u16string_view text) {
    if (m_positions.empty()) return kNoPosition;
    std::size_t first = kNoPosition;
    m_tree.Walk(text, [&](RadixTree::Node node, std::size_t) { first = std::min(first, m_positions[node].own); });
    return first;
}

std::size_t PrefixIndex::FirstOverlap(std::u16string_view text) {
    if (m_positions.empty()) return kNoPosition;
    std::size_t first = kNoPosition;
    const RadixTree::Place place =
        m_tree.Walk(text, [&](RadixTree::Node node, std::size_t) { first = std::min(first, m_positions[node].own); });
    return place.done == text.size() ? std::min(first, m_positions[place.node].below) : first;
}

void PrefixQueries::Add(std::u16string_view text) {
    const std::size_t number = m_owners.size();
    m_owners.push_back(kNoPosition);
    m_next.push_back(kNone);
    if (text.empty()) return;
    const RadixTree::Added added = m_tree.Add(text);
    m_open.resize(m_tree.Count());
    m_first.resize(m_tree.Count(), kNone);
    if (added.middle != RadixTree::kRoot) m_open[added.middle] = m_open[added.lower];
    m_next[number] = m_first[added.node];
    m_first[added.node] = number;
    for (RadixTree::Node node = added.node; node != RadixTree::kRoot; node = m_tree.Parent(node)) ++m_open[node];
    ++m_open[RadixTree::kRoot];
}

void PrefixQueries::TakeHere(RadixTree::Node node, std::size_t position) {
    std::size_t taken = 0;
    for (std::size_t number = m_first[node]; number != kNone; number = m_next[number], ++taken) {
        m_owners[number] = position;
    }
    if (taken == 0) return;
    m_first[node] = kNone;
    for (; node != RadixTree::kRoot; node = m_tree.Parent(node)) m_open[node] -= taken;
    m_open[RadixTree::kRoot] -= taken;
}

void PrefixQueries::TakeBelow(RadixTree::Node node, std::size_t position) {
    m_way.assign(1, node);
    while (!m_way.empty()) {
        const RadixTree::Node next = m_way.back();
        m_way.pop_back();
        if (m_open[next] == 0) continue;
        TakeHere(next, position);
        for (RadixTree::Node child = m_tree.FirstChild(next); child != RadixTree::kRoot;
             child = m_tree.NextSibling(child)) {
            m_way.push_back(child);
        }
    }
}

void PrefixQueries::ClaimExtensions(std::u16string_view text, std::size_t position) {
    if (text.empty() || !HasOpen()) return;
    const RadixTree::Place place = m_tree.Walk(text, [](RadixTree::Node, std::size_t) {});
    if (place.done == text.size()) TakeBelow(place.node, position);
}

void PrefixQueries::ClaimSameFolder(std::u16string_view text, std::size_t position) {
    if (text.empty() || !HasOpen()) return;
    const RadixTree::Place place = m_tree.Walk(text, [&](RadixTree::Node node, std::size_t done) {
        if (done == text.size() || m_tree.Folded()[done] == u'\\') TakeHere(node, position);
    });
    if (place.done != text.size()) return;
    if (m_tree.IsAtNode(place)) {
        const RadixTree::Node inside = m_tree.Child(place.node, u'\\');
        if (inside != RadixTree::kRoot) TakeBelow(inside, position);
    } else if (m_tree.NextInEdge(place) == u'\\') {
        TakeBelow(place.node, position);
    }
}

}  // namespace roundup
