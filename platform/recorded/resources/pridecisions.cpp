#include <algorithm>
#include <string>

#include "platform/recorded/resources/bytecursor.h"
#include "platform/recorded/resources/pritables.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::uint16_t kLanguage = 0;  // type of a qualifier
constexpr std::uint32_t kMostCandidates = 1024;
constexpr std::uint32_t kMostQualifiers = 64;  // of one candidate
constexpr std::size_t kLongestLanguage = 84;   // LOCALE_NAME_MAX_LENGTH less its terminator

// How well a candidate suits; the greater number comes first.
constexpr std::uint32_t kOtherLanguage = 0;
constexpr std::uint32_t kNoLanguage = 1;
constexpr std::uint32_t kSamePrimary = 2;
constexpr std::uint32_t kSameLanguage = 3;

// A decision is a list of qualifier sets, one for each candidate; a set is a list of qualifiers; a qualifier is a value
// and how good a fallback it is. All lists go through one table of indexes.
class Decisions {
  public:
    bool Open(ByteView section) {
        ByteCursor cursor(section);
        const auto distinct = cursor.Take<std::uint16_t>();
        const auto qualifiers = cursor.Take<std::uint16_t>();
        const auto sets = cursor.Take<std::uint16_t>();
        const auto decisions = cursor.Take<std::uint16_t>();
        const auto indexes = cursor.Take<std::uint16_t>();
        (void)cursor.Take<std::uint16_t>();  // length of the values
        m_decisions = cursor.TakeBytes(std::uint64_t{decisions} * 4);
        m_sets = cursor.TakeBytes(std::uint64_t{sets} * 4);
        m_qualifiers = cursor.TakeBytes(std::uint64_t{qualifiers} * 8);
        m_distinct = cursor.TakeBytes(std::uint64_t{distinct} * 12);
        m_indexes = cursor.TakeBytes(std::uint64_t{indexes} * 2);
        m_values = cursor.Rest();
        return !cursor.Failed();
    }

    std::uint32_t CandidateCount(std::uint32_t decision) const {
        return m_decisions.At<std::uint16_t>(std::uint64_t{decision} * 4 + 2).value_or(0);
    }

    // The class of the language in the upper half, the fallback score in the lower one.
    std::uint32_t Score(std::uint32_t decision, std::uint32_t candidate, std::u16string_view language) const {
        const std::uint32_t first = m_decisions.At<std::uint16_t>(std::uint64_t{decision} * 4).value_or(0);
        const std::uint64_t set = Index(first + candidate);
        const std::uint32_t firstQualifier = m_sets.At<std::uint16_t>(set * 4).value_or(0);
        const std::uint32_t count = m_sets.At<std::uint16_t>(set * 4 + 2).value_or(0);
        std::uint32_t score = kNoLanguage << 16U;
        for (std::uint32_t i = 0; i < std::min(count, kMostQualifiers); ++i) {
            const std::uint64_t qualifier = std::uint64_t{Index(firstQualifier + i)} * 8;
            const std::uint64_t value = std::uint64_t{m_qualifiers.At<std::uint16_t>(qualifier).value_or(0)} * 12;
            if (m_distinct.At<std::uint16_t>(value + 2) != kLanguage) continue;
            const std::uint64_t place = std::uint64_t{m_distinct.At<std::uint32_t>(value + 8).value_or(0)} * 2;
            score =
                (Compare(TextAt(place), language) << 16U) | m_qualifiers.At<std::uint16_t>(qualifier + 4).value_or(0);
        }
        return score;
    }

  private:
    std::uint32_t Index(std::uint32_t place) const {
        return m_indexes.At<std::uint16_t>(std::uint64_t{place} * 2).value_or(0xFFFF);
    }
    std::u16string TextAt(std::uint64_t place) const {
        std::u16string text;
        for (std::optional<char16_t> c; (c = m_values.At<char16_t>(place)) && *c != u'\0'; place += 2) {
            if (text.size() == kLongestLanguage) break;
            text.push_back(*c);
        }
        return text;
    }
    static std::uint32_t Compare(std::u16string_view a, std::u16string_view b) {
        if (EqualsNoCase(a, b)) return kSameLanguage;
        return EqualsNoCase(a.substr(0, a.find(u'-')), b.substr(0, b.find(u'-'))) ? kSamePrimary : kOtherLanguage;
    }

    ByteView m_decisions;
    ByteView m_sets;
    ByteView m_qualifiers;
    ByteView m_distinct;
    ByteView m_indexes;
    ByteView m_values;
};

}  // namespace

std::vector<std::uint32_t> RankPriCandidates(ByteView section, std::uint32_t decision, std::u16string_view language) {
    Decisions decisions;
    if (!decisions.Open(section)) return {};
    const std::uint32_t count = std::min(decisions.CandidateCount(decision), kMostCandidates);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> scored;
    for (std::uint32_t i = 0; i < count; ++i) scored.emplace_back(decisions.Score(decision, i, language), i);
    std::ranges::stable_sort(scored, std::greater<>(), [](const auto& each) { return each.first; });
    std::vector<std::uint32_t> ranked;
    ranked.reserve(scored.size());
    for (const auto& each : scored) ranked.push_back(each.second);
    return ranked;
}

}  // namespace roundup
