#include "appcenter/appreggather/commentreggather.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appreggather/scankeys.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/formattext.h"

namespace roundup {

namespace {

constexpr const char16_t* kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::size_t kLeastData = 8;  // bytes
constexpr std::size_t kColon = 1;      // where it stands in a path; a registry path has digits in front of it

// Calls use(value) for each value that can be read.
template <class Use>
void ForEachValue(CWFYRegKey& key, Use use) {
    for (RegValueView value;;) {
        const ResultCode rc = key.EnumValueView(value);
        if (Small(rc) == SmallCode::NoMoreItems) return;
        if (Succeeded(rc)) use(value);
    }
}

bool NamesFile(const RegValueView& value, std::u16string_view text) {
    return !value.Name().empty() && value.Type() == kRegSz && value.Data().size() >= kLeastData &&
           text.size() > kColon && text[kColon] == u':';
}

}  // namespace

CCommentRegGather::CCommentRegGather() {
    AtBoundary([this] { Scan(); }, [] {});
    PutInOrder();
}

void CCommentRegGather::Scan() {
    const bool view64 = Is64BitOS();
    CWFYRegKey key;
    if (Failed(key.Open(kHkeyLocalMachine, kUserData, view64, false))) return;
    SubKeyReader users(key, view64);
    ForEachSubKey(key, [&](std::u16string_view user) {
        if (Failed(users.Open(user, u"Components"))) return true;
        SubKeyReader components(users.Key(), view64);
        ForEachSubKey(users.Key(), [&](std::u16string_view component) {
            if (Succeeded(components.Open(component, {}))) AddComponent(components.Key(), user);
            return true;
        });
        return true;
    });
}

void CCommentRegGather::AddComponent(CWFYRegKey& component, std::u16string_view user) {
    ForEachValue(component, [&](const RegValueView& value) {
        const std::u16string_view text = value.Text();
        if (!NamesFile(value, text)) return;
        const auto [product, isNew] = m_products.Add(value.Name());
        if (isNew) m_products[product] = OwnedString(user);
        m_links.Add(m_paths[m_paths.Add(text).first], product);
    });
}

void CCommentRegGather::PutInOrder() {
    m_order.resize(m_paths.Count());
    std::iota(m_order.begin(), m_order.end(), 0U);
    std::ranges::sort(m_order, [this](std::uint32_t a, std::uint32_t b) {
        return CompareNoCase(m_paths.Text(a), m_paths.Text(b)) < 0;
    });
    for (std::uint32_t place = 0; place < m_order.size(); ++place) {
        const std::u16string_view path = m_paths.Text(m_order[place]);
        if (path.find(u':', kColon + 1) != path.npos) m_unusual.push_back(place);
    }
}

// A location with a drive can only stand where a path has a ":" in that place: at its beginning, whose paths are one
// run of those in order, or behind another one of the few that have a second ":".
std::vector<std::uint32_t> CCommentRegGather::Containing(std::u16string_view location) const {
    std::vector<std::uint32_t> places;
    const auto text = [this](std::uint32_t path) { return m_paths.Text(path); };
    const auto tryPlace = [&](std::uint32_t place) {
        if (text(m_order[place]).find(location) != location.npos) places.push_back(place);
    };
    if (location.size() <= kColon || location[kColon] != u':') {
        for (std::uint32_t place = 0; place < m_order.size(); ++place) tryPlace(place);
        return places;
    }
    const auto less = [](std::u16string_view a, std::u16string_view b) { return CompareNoCase(a, b) < 0; };
    const auto first = std::ranges::lower_bound(m_order, location, less, text);
    for (auto at = first; at != m_order.end() && StartsWithNoCase(text(*at), location); ++at) {
        tryPlace(static_cast<std::uint32_t>(at - m_order.begin()));
    }
    std::ranges::for_each(m_unusual, tryPlace);
    std::ranges::sort(places);
    places.erase(std::ranges::unique(places).begin(), places.end());
    return places;
}

void CCommentRegGather::AddComponentItems(std::u16string_view location, CAppRuleSet& ruleSet) const {
    if (location.empty()) return;
    std::vector<bool> done(m_products.Count());
    for (const std::uint32_t place : Containing(location)) {
        m_links.ForEach(m_paths[m_order[place]], [&](std::uint32_t number) {
            if (done[number]) return;
            done[number] = true;
            const std::u16string_view product = m_products.Text(number);
            const std::u16string keys[] = {
                FormatText(u"SOFTWARE\\Classes\\Installer\\Products\\%s", product),
                FormatText(u"SOFTWARE\\Classes\\Installer\\Features\\%s", product),
                FormatText(u"%s\\%s\\Products\\%s", kUserData, m_products[number], product),
            };
            for (const std::u16string& text : keys) ruleSet.IncludedRegs.Add(RuleRoot::kLocalMachine, text);
        });
    }
}

void AddComponentItems(std::u16string_view location, CAppRuleSet& ruleSet) {
    if (!location.empty()) ProcessWide<CCommentRegGather>().AddComponentItems(location, ruleSet);
}

}  // namespace roundup
