#include "appcenter/appeunm/patternindex.h"

#include <algorithm>
#include <numeric>

#include "utility/casemap.h"

namespace roundup {
namespace {

constexpr std::uint64_t ChildKey(std::uint32_t node, char16_t letter) noexcept {
    return (std::uint64_t{node} << 16) | letter;
}

}  // namespace

void PatternIndex::Add(std::u16string_view pattern, std::size_t position) {
    if (pattern.empty()) return;
    NodeNumber node = 0;
    for (const char16_t c : pattern) {
        const char16_t letter = ToUpper(c);
        const auto [at, isNew] = m_children.try_emplace(ChildKey(node, letter), NodeNumber(m_nodes.size()));
        if (isNew) m_nodes.push_back({node, 0, m_nodes[node].depth + 1, letter, kNoPosition});
        node = at->second;
    }
    m_nodes[node].best = std::min(m_nodes[node].best, position);
}

PatternIndex::NodeNumber PatternIndex::Child(NodeNumber node, char16_t letter) const {
    const auto at = m_children.find(ChildKey(node, letter));
    return at != m_children.end() ? at->second : 0;
}

PatternIndex::NodeNumber PatternIndex::Next(NodeNumber node, char16_t letter) const {
    for (;;) {
        if (const NodeNumber child = Child(node, letter); child != 0) return child;
        if (node == 0) return 0;
        node = m_nodes[node].fallback;
    }
}

// From the top down: the link of a node is found through that of its parent, and lies higher.
void PatternIndex::Link() {
    m_linked = true;
    std::vector<NodeNumber> order(m_nodes.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::sort(order, {}, [this](NodeNumber node) { return m_nodes[node].depth; });
    for (const NodeNumber number : order) {
        Node& node = m_nodes[number];
        if (node.depth <= 1) continue;
        node.fallback = Next(m_nodes[node.parent].fallback, node.letter);
        node.best = std::min(node.best, m_nodes[node.fallback].best);
    }
}

std::size_t PatternIndex::First(std::u16string_view text) {
    if (m_children.empty()) return kNoPosition;
    if (!m_linked) Link();
    std::size_t first = kNoPosition;
    NodeNumber node = 0;
    for (const char16_t c : text) {
        node = Next(node, ToUpper(c));
        first = std::min(first, m_nodes[node].best);
    }
    return first;
}

}  // namespace roundup
