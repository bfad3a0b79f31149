// A small ordered set in one block of memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

namespace roundup {

// For sets of a few members, most of which are empty: an empty one is three words and owns no memory. Adding and
// removing move what stands behind the place. What the standard library throws for want of memory goes through.
template <class T>
class FlatSet {
  public:
    using const_iterator = typename std::vector<T>::const_iterator;

    FlatSet() = default;
    FlatSet(std::initializer_list<T> members) {
        for (const T& member : members) insert(member);
    }

    void insert(const T& member) {
        const auto place = std::lower_bound(m_members.begin(), m_members.end(), member);
        if (place == m_members.end() || member < *place) m_members.insert(place, member);
    }
    template <class Iterator>
    void insert(Iterator first, Iterator last) {
        for (; first != last; ++first) insert(*first);
    }
    // How many were removed: one or none.
    std::size_t erase(const T& member) {
        const auto place = std::lower_bound(m_members.begin(), m_members.end(), member);
        if (place == m_members.end() || member < *place) return 0;
        m_members.erase(place);
        return 1;
    }
    bool contains(const T& member) const { return std::binary_search(m_members.begin(), m_members.end(), member); }

    const_iterator begin() const noexcept { return m_members.begin(); }
    const_iterator end() const noexcept { return m_members.end(); }
    std::size_t size() const noexcept { return m_members.size(); }
    bool empty() const noexcept { return m_members.empty(); }

  private:
    std::vector<T> m_members;
};

}  // namespace roundup
