#include "platform/recorded/filemask.h"

#include <algorithm>
#include <vector>

#include "utility/casemap.h"

namespace roundup {

namespace {

// Wildcards of the file system (ntifs.h).
constexpr char16_t kDosStar = u'<';
constexpr char16_t kDosQuestion = u'>';
constexpr char16_t kDosDot = u'"';

bool IsWildcard(char16_t c) noexcept { return c == u'*' || c == u'?'; }

}  // namespace

FileMask::FileMask(std::u16string_view mask) {
    // Periods at the end are no part of a name, yet "*." asks for names without an extension.
    const std::size_t end = mask.find_last_not_of(u". ");
    const bool cut = end != std::u16string_view::npos && end + 1 < mask.size() && mask[end + 1] == u'.';
    m_mask = mask.substr(0, end == std::u16string_view::npos ? mask.size() : end + 1);
    if (m_mask == u"*.*") m_mask = u"*";
    m_wild = std::any_of(m_mask.begin(), m_mask.end(), IsWildcard);
    for (std::size_t i = 0; i < m_mask.size(); ++i) {
        const char16_t c = m_mask[i];
        if (IsWildcard(c) && i != 0 && m_mask[i - 1] == u'.') m_mask[i - 1] = kDosDot;
        if (c == u'?') m_mask[i] = kDosQuestion;
        if (c == u'.' && i != 0 && m_mask[i - 1] == u'*') m_mask[i - 1] = kDosStar;
    }
    if (cut && m_mask.back() == u'*') m_mask.back() = kDosStar;
    std::transform(m_mask.begin(), m_mask.end(), m_mask.begin(), ToUpper);
    m_literal = std::min(m_mask.find_first_of(u"*?<>\""), m_mask.size());
}

// A walk of all ways through the mask at once: state[i] says that the name read so far can stand before place i of
// the mask. It costs mask times name at most, whatever the mask.
bool FileMask::Matches(std::u16string_view name) const {
    if (MatchesAll()) return true;
    // Most names of a large folder differ from the mask before its first wildcard.
    for (std::size_t i = 0; i < m_literal; ++i) {
        if (i == name.size() || ToUpper(name[i]) != m_mask[i]) return false;
    }
    if (!m_wild)
        return std::equal(name.begin(), name.end(), m_mask.begin(), m_mask.end(),
                          [](char16_t a, char16_t b) { return ToUpper(a) == b; });
    const std::size_t places = m_mask.size() + 1;
    std::vector<bool> state(places);
    std::vector<bool> next(places);
    const std::size_t lastDot = name.rfind(u'.');
    // The wildcards that may stand for nothing: stars anywhere, DOS_QM in front of a period or at the end, DOS_DOT at
    // the end.
    const auto skipEmpty = [&](std::vector<bool>& places_, std::size_t at) {
        const bool atEnd = at == name.size();
        for (std::size_t i = 0; i + 1 < places; ++i) {
            if (!places_[i]) continue;
            const char16_t m = m_mask[i];
            const bool empty = m == u'*' || m == kDosStar || (m == kDosQuestion && (atEnd || name[at] == u'.')) ||
                               (m == kDosDot && atEnd);
            if (empty) places_[i + 1] = true;
        }
    };
    state[0] = true;
    skipEmpty(state, 0);
    for (std::size_t at = 0; at < name.size(); ++at) {
        const char16_t c = ToUpper(name[at]);
        std::fill(next.begin(), next.end(), false);
        for (std::size_t i = 0; i + 1 < places; ++i) {
            if (!state[i]) continue;
            const char16_t m = m_mask[i];
            // DOS_STAR runs up to the last period of the name and no further.
            if (m == u'*' || (m == kDosStar && at != lastDot)) next[i] = true;
            if (m == kDosQuestion ? c != u'.' : m == kDosDot ? c == u'.' : m == c && m != u'*' && m != kDosStar) {
                next[i + 1] = true;
            }
        }
        state.swap(next);
        skipEmpty(state, at + 1);
    }
    return state[m_mask.size()];
}

}  // namespace roundup
