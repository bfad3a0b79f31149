// Finds the first text of a list that another text starts with, and the other way round.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "appcenter/appeunm/radixtree.h"
#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// Texts, each with the position of its owner in a list; all questions ask for the smallest position and ignore case.
// Texts may be added at any time, in any order. Used by one thread.
class PrefixIndex {
  public:
    // An empty text is not added.
    void Add(std::u16string_view text, std::size_t position);

    // Of the texts that text starts with, whatever character follows.
    std::size_t FirstPrefixOf(std::u16string_view text);
    // Of the texts that equal text over the length of the shorter of the two.
    std::size_t FirstOverlap(std::u16string_view text);

  private:
    struct Positions {
        std::size_t own = kNoPosition;    // of the text that ends here
        std::size_t below = kNoPosition;  // the smallest here and below
    };

    RadixTree m_tree;
    std::vector<Positions> m_positions;  // by node
};

// The same question asked of many texts at once, when those are few and the texts that they may start with are many:
// the few are kept, and the owners of the many claim what is theirs, one after the other in list order. So a text
// falls to the first owner that fits, and each falls once.
class PrefixQueries {
  public:
    // Numbers count from 0. Nobody claims an empty text.
    void Add(std::u16string_view text);

    // Claims for the position every open text that starts with this one, whatever character follows.
    void ClaimExtensions(std::u16string_view text, std::size_t position);
    // Claims every open folder that is text, lies above it or lies in it: the longer path goes on with a backslash.
    void ClaimSameFolder(std::u16string_view text, std::size_t position);

    // Who has claimed the text of that number; kNoPosition for an open one.
    std::size_t OwnerOf(std::size_t number) const { return m_owners[number]; }
    bool HasOpen() const { return !m_open.empty() && m_open[RadixTree::kRoot] != 0; }

  private:
    static constexpr std::size_t kNone = kNoPosition;

    void TakeHere(RadixTree::Node node, std::size_t position);
    void TakeBelow(RadixTree::Node node, std::size_t position);

    RadixTree m_tree;
    std::vector<std::size_t> m_open;     // by node: open texts here and below
    std::vector<std::size_t> m_first;    // by node: the last text that ends there
    std::vector<std::size_t> m_next;     // by number: another text that ends at the same node
    std::vector<std::size_t> m_owners;   // by number
    std::vector<RadixTree::Node> m_way;  // nodes yet to look at
};

}  // namespace roundup
