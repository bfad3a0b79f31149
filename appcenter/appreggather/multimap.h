// Indexes from texts, which compare ignoring case.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "utility/casemap.h"
#include "utility/flatmap.h"
#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

// Numbers texts from 0 in the order in which they come, and owns the first spelling of each.
class TextIndex {
  public:
    static constexpr std::uint32_t kNone = UINT32_MAX;

    // Makes room for so many more texts.
    void Reserve(std::size_t more) {
        m_texts.reserve(m_texts.size() + more);
        m_numbers.Reserve(m_texts.size() + more);
    }
    // The number of the text, and whether it is new. The text must not be null.
    std::pair<std::uint32_t, bool> Add(OwnedString text) {
        const auto number = static_cast<std::uint32_t>(m_texts.size());
        // Room first, so that want of memory cannot leave a number without its text.
        if (m_texts.size() == m_texts.capacity()) m_texts.reserve(m_texts.size() * 2 + 16);
        const auto [found, made] = m_numbers.TryAdd(text.View(), number);
        if (made) m_texts.push_back(std::move(text));
        return {found, made};
    }
    // As Add, and the text is spelled like this from then on: texts that differ in case alone are of one length.
    std::uint32_t AddSpelled(OwnedString text) {
        const std::uint32_t number = Find(text);
        if (number == kNone) return Add(std::move(text)).first;
        std::ranges::copy(text.View(), m_texts[number].Data());
        return number;
    }
    std::uint32_t Find(std::u16string_view text) const {
        const std::uint32_t* const found = m_numbers.Find(text);
        return found != nullptr ? *found : kNone;
    }
    const OwnedString& Text(std::uint32_t number) const noexcept { return m_texts[number]; }
    std::size_t Count() const noexcept { return m_texts.size(); }

  private:
    std::vector<OwnedString> m_texts;
    FlatMap<std::u16string_view, std::uint32_t, NoCaseHash, NoCaseEqual> m_numbers;
};

// A text index with a value for each text, default-made with its number.
template <class Value>
class TextTable : public TextIndex {
  public:
    std::pair<std::uint32_t, bool> Add(OwnedString text) {
        MakeRoom();
        return TextIndex::Add(std::move(text));
    }
    void Reserve(std::size_t more) {
        TextIndex::Reserve(more);
        m_values.reserve(Count() + more + 1);
    }
    std::uint32_t AddSpelled(OwnedString text) {
        MakeRoom();
        return TextIndex::AddSpelled(std::move(text));
    }
    // As Add; kNone for a text without characters.
    std::uint32_t AddOrNone(OwnedString text) { return text.IsEmpty() ? kNone : Add(std::move(text)).first; }
    Value& operator[](std::uint32_t number) noexcept { return m_values[number]; }
    const Value& operator[](std::uint32_t number) const noexcept { return m_values[number]; }

  private:
    void MakeRoom() {
        if (m_values.size() <= Count()) m_values.resize(Count() + 1);
    }

    std::vector<Value> m_values;
};

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
        if (texts.contains(index.Text(number).View())) use(number);
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

    // Nothing happens for a key without text.
    void Add(OwnedString key, std::u16string_view value) {
        if (key.IsEmpty()) return;
        const auto place = static_cast<std::uint32_t>(m_values.size());
        m_values.push_back(value);
        m_links.Add(m_keys[m_keys.Add(std::move(key)).first], place);
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
