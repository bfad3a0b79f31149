// Numbers for texts, which compare ignoring case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "utility/casemap.h"
#include "utility/flatmap.h"
#include "utility/textarena.h"

namespace roundup {

// Texts that lie elsewhere, to be numbered together.
struct TextColumn {
    std::vector<std::u16string_view> texts;
    std::vector<std::uint32_t> hashes;
    std::vector<std::uint32_t> numbers;  // once they have them

    void Reserve(std::size_t count) { texts.reserve(count), hashes.reserve(count); }
    void Add(std::u16string_view text);
};

// Numbers texts from 0 in the order in which they come, and owns the first spelling of each. What is given is copied.
//
// The scans read tens of thousands of ids, each of which lies somewhere else in an index that is larger than a
// processor's nearest memory. So those of a scan are numbered together: what one needs is fetched while those in front
// of it are compared. They are read one by one before, as the registry lists them: to read names ahead of the keys
// that they name costs the registry more than the index gains.
class TextIndex {
  public:
    static constexpr std::uint32_t kNone = UINT32_MAX;

    // Makes room for so many more texts.
    void Reserve(std::size_t more) { m_map.Reserve(Count() + more); }
    // The number of the text, and whether it is new.
    std::pair<std::uint32_t, bool> Add(std::u16string_view text) { return AddHashed(text, Map::HashOf(text)); }
    // Numbers each text of the column in turn; kNone for one without characters.
    void AddAll(TextColumn& column) {
        // In texts: a question takes a few dozen nanoseconds, and memory a hundred to come.
        constexpr std::size_t kStep = 6;
        const std::vector<std::u16string_view>& texts = column.texts;
        const std::vector<std::uint32_t>& hashes = column.hashes;
        column.numbers.resize(texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (i + 3 * kStep < texts.size()) m_map.FetchSlot(hashes[i + 3 * kStep]);
            if (i + 2 * kStep < texts.size()) m_map.FetchEntry(hashes[i + 2 * kStep]);
            if (i + kStep < texts.size()) {
                if (const Map::Entry* const entry = m_map.Likely(hashes[i + kStep])) {
                    __builtin_prefetch(entry->key.data());
                }
            }
            column.numbers[i] = texts[i].empty() ? kNone : AddHashed(texts[i], hashes[i]).first;
        }
    }
    std::uint32_t Find(std::u16string_view text) const { return m_map.PlaceOf(text, Map::HashOf(text)); }
    // The text of the number is spelled like this from then on; the two differ in case alone.
    void Respell(std::uint32_t number, std::u16string_view text) { m_map.ReplaceKey(number, m_texts.Copy(text)); }
    // Zero-terminated; good until it is spelled anew.
    std::u16string_view Text(std::uint32_t number) const noexcept { return m_map.At(number).key; }
    std::size_t Count() const noexcept { return m_map.Count(); }

  private:
    friend struct TextColumn;
    struct Nothing {};
    using Map = FlatMap<std::u16string_view, Nothing, NoCaseHash, NoCaseEqual>;
    static_assert(Map::kNone == kNone);

    std::pair<std::uint32_t, bool> AddHashed(std::u16string_view text, std::uint32_t hash) {
        if (const std::uint32_t known = m_map.PlaceOf(text, hash); known != kNone) return {known, false};
        return m_map.Enter(m_texts.Copy(text), hash, {});
    }

    Map m_map;
    TextArena m_texts;
};

inline void TextColumn::Add(std::u16string_view text) {
    texts.push_back(text);
    hashes.push_back(TextIndex::Map::HashOf(text));
}

// A text index with a value for each text, default-made with its number.
template <class Value>
class TextTable : public TextIndex {
  public:
    std::pair<std::uint32_t, bool> Add(std::u16string_view text) {
        // Before the text, so that want of memory cannot leave a number without its value; below too.
        if (m_values.size() <= Count()) m_values.resize(Count() + 1);
        return TextIndex::Add(text);
    }
    void AddAll(TextColumn& column) {
        m_values.reserve(Count() + column.texts.size());
        const Filler filler{*this};
        TextIndex::AddAll(column);
    }
    // As Add; kNone for a text without characters.
    std::uint32_t AddOrNone(std::u16string_view text) { return text.empty() ? kNone : Add(text).first; }
    Value& operator[](std::uint32_t number) noexcept { return m_values[number]; }
    const Value& operator[](std::uint32_t number) const noexcept { return m_values[number]; }
    // For a value that will be asked for soon; any number.
    void Fetch(std::uint32_t number) const noexcept {
        if (number < m_values.size()) __builtin_prefetch(&m_values[number]);
    }

  private:
    // Gives each text its value, also those in front of one that memory was short for.
    struct Filler {
        TextTable& table;
        ~Filler() {
            if (table.m_values.size() < table.Count()) table.m_values.resize(table.Count());
        }
    };

    std::vector<Value> m_values;
};

}  // namespace roundup
