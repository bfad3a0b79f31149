// Finds the first of a list's applications that has a key.
#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

#include "appcenter/appeunm/reconcilelists.h"
#include "utility/casemap.h"
#include "utility/guid.h"

namespace roundup {

// Each key has the chain of its positions in list order. Applications leave a list but never come back to it, so a
// position that is found gone is dropped for good, and a question costs the same however many have left before.
template <class Key, class Hash = std::hash<Key>, class Equal = std::equal_to<Key>>
class FirstIndex {
  public:
    // Positions of one key come in ascending order. What a key views must stay as it is.
    void Add(const Key& key, std::size_t position) {
        const std::size_t link = m_links.size();
        m_links.push_back({position, kNoPosition});
        const auto [at, isNew] = m_chains.try_emplace(key, Chain{link, link});
        if (isNew) return;
        Chain& chain = at->second;
        if (chain.first == kNoPosition) {
            chain.first = link;
        } else {
            m_links[chain.last].next = link;
        }
        chain.last = link;
    }

    // The first position of the key but for except that still has its application; kNoPosition when there is none.
    std::size_t First(const Key& key, const CAppList& list, std::size_t except = kNoPosition) {
        const auto at = m_chains.find(key);
        if (at == m_chains.end()) return kNoPosition;
        return First(
            at->second, [&list](std::size_t position) { return static_cast<bool>(list[position]); }, except);
    }
    // The same with a test of the caller's, which never turns true again for a position.
    template <class IsLeft>
    std::size_t FirstLeft(const Key& key, IsLeft isLeft, std::size_t except = kNoPosition) {
        const auto at = m_chains.find(key);
        return at != m_chains.end() ? First(at->second, isLeft, except) : kNoPosition;
    }
    bool IsEmpty() const noexcept { return m_chains.empty(); }

  private:
    struct Link {
        std::size_t position;
        std::size_t next;
    };
    struct Chain {
        std::size_t first;
        std::size_t last;
    };

    template <class IsLeft>
    std::size_t First(Chain& chain, IsLeft isLeft, std::size_t except) {
        std::size_t* next = &chain.first;
        while (*next != kNoPosition) {
            const Link& link = m_links[*next];
            if (!isLeft(link.position)) {
                *next = link.next;
            } else if (link.position != except) {
                return link.position;
            } else {
                next = &m_links[*next].next;
            }
        }
        FixLast(chain);
        return kNoPosition;
    }

    // After the end of a chain has been dropped: what is left is at most the position that was excepted.
    void FixLast(Chain& chain) noexcept { chain.last = chain.first; }

    std::unordered_map<Key, Chain, Hash, Equal> m_chains;
    std::vector<Link> m_links;
};

using FirstByCode = FirstIndex<Guid>;
using FirstByText = FirstIndex<std::u16string_view, NoCaseHash, NoCaseEqual>;

}  // namespace roundup
