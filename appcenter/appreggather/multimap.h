// What texts lead to: records by their numbers, and other texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "appcenter/appreggather/textindex.h"
#include "utility/stringcontainers.h"

namespace roundup {

// Calls use(number) for each text that is in both, walking the smaller of the two.
template <class Use>
void ForEachInBoth(const CStringSet& texts, const TextIndex& index, Use use) {
    if (texts.size() <= index.Count()) {
        for (const OwnedString& text : texts) {
            if (const std::uint32_t number = index.Find(text); number != TextIndex::kNone) use(number);
        }
        return;
    }
    for (std::uint32_t number = 0; number < index.Count(); ++number) {
        if (texts.contains(index.Text(number))) use(number);
    }
}

// Lists of numbers in the order of their adding, all in one block: there are thousands, and most have one element.
class NumberLists {
  public:
    struct List {
        std::uint32_t first = 0;  // place in the block from 1; 0 is none
        std::uint32_t last = 0;
    };

    void Add(List& list, std::uint32_t number) {
        m_links.push_back({number, 0});
        const auto place = static_cast<std::uint32_t>(m_links.size());
        (list.first == 0 ? list.first : m_links[list.last - 1].next) = place;
        list.last = place;
    }
    template <class Use>
    void ForEach(const List& list, Use use) const {
        for (std::uint32_t at = list.first; at != 0; at = m_links[at - 1].next) use(m_links[at - 1].number);
    }

  private:
    struct Link {
        std::uint32_t number;
        std::uint32_t next;
    };
    std::vector<Link> m_links;
};

// From one text to several, which belong to others and must stay where they are. Keeps all, in order.
class CMultiMap {
  public:
    CMultiMap() = default;
    CMultiMap(const CMultiMap&) = delete;
    CMultiMap& operator=(const CMultiMap&) = delete;
    virtual ~CMultiMap() = default;

    // Adds pairs, of which no key is empty; value(i) is that of the key with this place in the column.
    template <class Value>
    void AddAll(TextColumn& keys, Value value) {
        m_keys.AddAll(keys);
        for (std::size_t i = 0; i < keys.numbers.size(); ++i) {
            m_links.Add(m_keys[keys.numbers[i]], static_cast<std::uint32_t>(m_values.size()));
            m_values.push_back(value(i));
        }
    }
    template <class Use>
    void ForEach(std::u16string_view key, Use use) const {
        if (const std::uint32_t number = m_keys.Find(key); number != TextIndex::kNone) UseAll(number, use);
    }
    // All values of each of the keys.
    template <class Use>
    void ForEachOf(const CStringSet& keys, Use use) const {
        ForEachInBoth(keys, m_keys, [&](std::uint32_t number) { UseAll(number, use); });
    }

  private:
    template <class Use>
    void UseAll(std::uint32_t number, Use& use) const {
        m_links.ForEach(m_keys[number], [&](std::uint32_t place) { use(m_values[place]); });
    }

    TextTable<NumberLists::List> m_keys;
    NumberLists m_links;
    std::vector<std::u16string_view> m_values;
};

}  // namespace roundup
