#include "appcenter/appreggather/scanentries.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

#include "appcenter/appreggather/noisewords.h"

namespace roundup {

// A word as it is read, with the number of its text and later that text's place in the order.
struct WordIndex::Item {
    std::uint32_t word;
    std::uint32_t entry;
    std::uint32_t number;  // in the order of reading
    std::u16string_view text;
};

// Many entries have the same words, and each is often read in several views: texts are told apart by a hash, and only
// those that differ are compared for their order. Equal words of one entry stand as the first of them was written.
void WordIndex::BuildItems(const std::vector<ScanEntry>& entries, std::uint32_t level, std::vector<Item>& items) {
    FlatMap<std::u16string_view, std::uint32_t, NoCaseHash, NoCaseEqual> numbers;
    std::vector<std::u16string_view> texts;
    for (std::uint32_t entry = 0; entry < entries.size(); ++entry) {
        if (entries[entry].dwLevel != level) continue;
        for (const NameToken& word : entries[entry].Words) {
            const std::u16string_view text = word.pwszText;
            const auto [number, isNew] = numbers.TryAdd(text, static_cast<std::uint32_t>(texts.size()));
            if (isNew) texts.push_back(text);
            items.push_back({number, entry, static_cast<std::uint32_t>(items.size()), text});
        }
    }
    std::vector<std::uint32_t> order(texts.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, [&](std::uint32_t a, std::uint32_t b) { return CompareNoCase(texts[a], texts[b]) < 0; });
    std::vector<std::uint32_t> rank(texts.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        rank[order[i]] = i;
        m_words.push_back({texts[order[i]], 0, kNone});
    }
    for (Item& item : items) item.word = rank[item.word];
}

void WordIndex::LinkBeginnings() {
    for (std::uint32_t i = 1; i < m_words.size(); ++i) {
        std::uint32_t before = i - 1;
        while (before != kNone && !StartsWithNoCase(m_words[i].text, m_words[before].text)) {
            before = m_words[before].beginsWith;
        }
        m_words[i].beginsWith = before;
    }
}

void WordIndex::Build(const std::vector<ScanEntry>& entries, std::uint32_t level) {
    std::vector<Item> items;
    BuildItems(entries, level, items);
    std::ranges::sort(items, [](const Item& a, const Item& b) {
        return std::tie(a.word, a.entry, a.number) < std::tie(b.word, b.entry, b.number);
    });
    std::uint32_t begun = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Item& item = items[i];
        if (i != 0 && items[i - 1].word == item.word && items[i - 1].entry == item.entry) continue;
        if (item.word == begun) m_words[begun++].firstPlace = static_cast<std::uint32_t>(m_places.size());
        m_places.push_back({item.entry, item.text});
    }
    LinkBeginnings();
}

std::uint32_t WordIndex::LastUpTo(std::u16string_view text) const noexcept {
    const auto after = std::ranges::upper_bound(
        m_words, text, [](std::u16string_view a, std::u16string_view b) { return CompareNoCase(a, b) < 0; },
        &Word::text);
    return static_cast<std::uint32_t>(after - m_words.begin()) - 1;
}

ScanEntry& ScanEntries::At(std::u16string_view name, std::uint32_t level, bool& isNew) {
    if (const std::uint32_t* const found = m_byName.Find(name); found != nullptr) {
        isNew = false;
        return m_entries[*found];
    }
    isNew = true;
    ScanEntry& entry = m_entries.emplace_back();
    entry.pwszName = OwnedString(name);
    entry.dwLevel = level;
    m_byName.TryAdd(entry.pwszName.View(), static_cast<std::uint32_t>(m_entries.size() - 1));
    return entry;
}

void ScanEntries::AddWord(ScanEntry& entry, std::u16string_view word) {
    if (IsNoiseWord(word)) return;
    NameToken token(word);
    if (!token.pwszText.IsNull()) entry.Words.push_back(std::move(token));
}

void ScanEntries::PutInOrder() {
    m_byName = {};
    std::ranges::sort(m_entries,
                      [](const ScanEntry& a, const ScanEntry& b) { return CompareNoCase(a.pwszName, b.pwszName) < 0; });
    m_words[0].Build(m_entries, 0);
    m_words[1].Build(m_entries, 1);
}

}  // namespace roundup
