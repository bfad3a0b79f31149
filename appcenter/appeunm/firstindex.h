// Finds the first of a list's applications that has a key.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "appcenter/appeunm/reconcilelists.h"
#include "utility/casemap.h"
#include "utility/flatmap.h"
#include "utility/guid.h"

namespace roundup {

// Each key has the chain of its positions in list order. Applications leave a list but never come back to it, so a
// position that is found gone is dropped for good, and a question costs the same however many have left before.
template <class Key, class Hash, class Equal>
class FirstIndex {
  public:
    // Positions of one key come in ascending order. What a key views must stay as it is as long as the index.
    void Add(const Key& key, std::size_t position) {
        const std::size_t link = m_links.size();
        m_links.push_back({position, kNoPosition});
        const auto [chain, isNew] = m_chains.TryAdd(key, Chain{link, link});
        if (isNew) return;
        Append(chain, link);
    }
    // The same for keys that are asked for, and for no others: Want first, then AddWanted for whatever there is.
    void Want(const Key& key) { m_chains.TryAdd(key, Chain{kNoPosition, kNoPosition}); }
    void AddWanted(const Key& key, std::size_t position) {
        Chain* const chain = m_chains.Find(key);
        if (chain == nullptr) return;
        m_links.push_back({position, kNoPosition});
        Append(*chain, m_links.size() - 1);
    }

    // The first position of the key that still has its application; kNoPosition when there is none.
    std::size_t First(const Key& key, const CAppList& list) {
        return FirstLeft(key, [&list](std::size_t position) { return static_cast<bool>(list[position]); });
    }
    // The same with a test of the caller's, which never turns true again for a position, and but for except.
    template <class IsLeft>
    std::size_t FirstLeft(const Key& key, IsLeft isLeft, std::size_t except = kNoPosition) {
        Chain* const chain = m_chains.Find(key);
        return chain != nullptr ? First(*chain, isLeft, except) : kNoPosition;
    }
    bool IsEmpty() const noexcept { return m_chains.IsEmpty(); }

  private:
    struct Link {
        std::size_t position;
        std::size_t next;
    };
    struct Chain {
        std::size_t first;
        std::size_t last;
    };

    void Append(Chain& chain, std::size_t link) {
        if (chain.first == kNoPosition) {
            chain.first = link;
        } else {
            m_links[chain.last].next = link;
        }
        chain.last = link;
    }

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
        // The end may have been dropped; what is left is at most the position that was excepted.
        chain.last = chain.first;
        return kNoPosition;
    }

    FlatMap<Key, Chain, Hash, Equal> m_chains;
    std::vector<Link> m_links;
};

using FirstByCode = FirstIndex<Guid, std::hash<Guid>, std::equal_to<Guid>>;
using FirstByText = FirstIndex<std::u16string_view, NoCaseHash, NoCaseEqual>;

}  // namespace roundup
