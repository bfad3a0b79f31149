// The entries of the word caches: folders and keys, each with the words that it is found by.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "appcenter/appreggather/nametokens.h"
#include "utility/casemap.h"
#include "utility/flatmap.h"
#include "utility/ownedstring.h"

namespace roundup {

struct ScanEntry {
    OwnedString pwszName;          // relative to where it lies
    std::uint32_t dwLevel = 0;     // 1: under the folder or key of the platform's maker
    std::vector<NameToken> Words;  // while the cache is built a word may stand here twice
};

// Finds the words of the entries of one level that begin as a token does, or as which it begins.
//
// The words stand in order, ignoring case, and each knows the longest other word that it begins with. The words that a
// token begins with are then that one of them which stands last at or before the token, or words that this one begins
// with: all between the two begin alike. And the words that begin with the token follow in one run. So no other word is
// compared with it but those that are searched through in halves.
class WordIndex {
  public:
    static constexpr std::uint32_t kNone = UINT32_MAX;

    // One word of one entry. Places ascend by word, then by entry, so that of one entry a lower place is the word that
    // comes first.
    struct Place {
        std::uint32_t entry;
        std::u16string_view word;
    };

    // The entries have to stay as they are.
    void Build(const std::vector<ScanEntry>& entries, std::uint32_t level);

    const Place& At(std::uint32_t place) const noexcept { return m_places[place]; }
    std::size_t Count() const noexcept { return m_places.size(); }

    // Calls use(place) for each place whose word equals the token.
    template <class Use>
    void ForEachEqual(std::u16string_view token, Use use) const {
        const std::uint32_t at = LastUpTo(token);
        if (at != kNone && EqualsNoCase(m_words[at].text, token)) UsePlaces(at, use);
    }
    // Calls use(place, n) for each place whose word has the n first characters of the token, n being the smaller of the
    // two lengths and not 0.
    template <class Use>
    void ForEachAlike(std::u16string_view token, Use use) const {
        if (token.empty()) return;
        const std::uint32_t last = LastUpTo(token);
        for (std::uint32_t at = last; at != kNone; at = m_words[at].beginsWith) {
            const std::u16string_view word = m_words[at].text;
            if (StartsWithNoCase(token, word)) UsePlaces(at, [&](std::uint32_t place) { use(place, word.size()); });
        }
        for (std::uint32_t at = last + 1; at < m_words.size() && StartsWithNoCase(m_words[at].text, token); ++at) {
            UsePlaces(at, [&](std::uint32_t place) { use(place, token.size()); });
        }
    }

  private:
    struct Word {
        std::u16string_view text;
        std::uint32_t firstPlace;
        std::uint32_t beginsWith;  // the longest other word that this one begins with
    };
    struct Item;

    void BuildItems(const std::vector<ScanEntry>& entries, std::uint32_t level, std::vector<Item>& items);
    void LinkBeginnings();
    // The last word at or before the text in order; kNone without one, whose successor is 0.
    std::uint32_t LastUpTo(std::u16string_view text) const noexcept;
    template <class Use>
    void UsePlaces(std::uint32_t word, Use use) const {
        const std::size_t end = word + 1 < m_words.size() ? m_words[word + 1].firstPlace : m_places.size();
        for (std::uint32_t place = m_words[word].firstPlace; place < end; ++place) use(place);
    }

    std::vector<Word> m_words;  // each once, in order
    std::vector<Place> m_places;
};

// Filled by a scan, then put in order once, and only read from then on.
class ScanEntries {
  public:
    // The entry of that name, made when it is not there; isNew tells which. Good until the next one is made.
    ScanEntry& At(std::u16string_view name, std::uint32_t level, bool& isNew);
    // Noise words are left out.
    static void AddWord(ScanEntry& entry, std::u16string_view word);
    void PutInOrder();

    // In the order of their names, ignoring case.
    const std::vector<ScanEntry>& All() const noexcept { return m_entries; }
    // bMicrosoft: the level that is asked for.
    const WordIndex& Words(std::uint32_t bMicrosoft) const noexcept { return m_words[bMicrosoft != 0 ? 1 : 0]; }

  private:
    std::vector<ScanEntry> m_entries;
    FlatMap<std::u16string_view, std::uint32_t, NoCaseHash, NoCaseEqual> m_byName;
    std::array<WordIndex, 2> m_words;
};

}  // namespace roundup
