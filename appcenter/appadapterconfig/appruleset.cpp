#include "appcenter/appadapterconfig/appruleset.h"

#include <algorithm>

#include "appcenter/app/iapp.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadapterconfig/rulelines.h"
#include "appcenter/appadapterconfig/ruletext.h"
#include "platform/machine.h"

namespace roundup {
namespace {

constexpr std::u16string_view kGlobalKey = u"{00000000-0000-0000-0000-000000000000}";
// The kinds of dash by which a version stands behind a name, in the order in which they are looked for.
constexpr std::u16string_view kDashes = u"-\u2014\u2013";

struct GlobalRules {
    const CAppRuleSet rules{RuleSetSource{kGlobalKey, {}, {}, {}}};
};

// What stands before the key's dash, less the blanks at its end; empty without one.
std::u16string_view ShorterName(std::u16string_view key) noexcept {
    for (const char16_t dash : kDashes) {
        const std::size_t at = key.find(dash);
        if (at == std::u16string_view::npos) continue;
        const std::size_t last = key.substr(0, at).find_last_not_of(u' ');
        return key.substr(0, last != std::u16string_view::npos ? last + 1 : 0);
    }
    return {};
}

void ReadRules(const RuleSetSource& source, CAppRuleSet& rules) {
    const std::u16string_view name = source.typeDescription.empty() ? source.key : source.typeDescription;
    if (name.empty()) return;
    const std::u16string_view shorter = ShorterName(source.key);
    RuleFileStore& store = ProcessWide<RuleFileStore>();
    if (!store.MayHave(name, shorter)) return;
    for (const RuleFileKind kind : {RuleFileKind::Include, RuleFileKind::Exclude}) {
        FoundRuleFile found = store.Find(name, kind);
        if (!found.exists && !shorter.empty()) found = store.Find(shorter, kind);
        if (found.file != nullptr) ApplyRuleLines(*found.file, kind, source, rules);
    }
}

bool Matches(const RuleTexts& names, const RuleTexts& keys, std::u16string_view name, std::u16string_view key) {
    const auto occurs = [name](const OwnedString& part) { return ContainsNoCase(name, part); };
    return std::ranges::any_of(names, occurs) || keys.Contains(key);
}

}  // namespace

CAppRuleSet::CAppRuleSet(const RuleSetSource& source) { ReadRules(source, *this); }

const CAppRuleSet& CAppRuleSet::Global() { return ProcessWide<GlobalRules>().rules; }

bool CAppRuleSet::IsFileExcluded(TextOrNull path) const {
    if (path.View().empty() || ExcludedFiles.Contains(path.View())) return true;
    return Global().ExcludedFiles.Contains(path.View());
}

bool CAppRuleSet::IsDirExcluded(TextOrNull path) const {
    if (path.View().empty() || ExcludedDirectories.Contains(path.View())) return true;
    return Global().ExcludedDirectories.Contains(path.View());
}

bool CAppRuleSet::IsSubAppMatch(const IApp& app) const {
    AppRecordEx record{};
    app.FillAppInfo(record);
    return IsSubAppMatch(record.wzName, record.wzKeyString);
}

bool CAppRuleSet::IsSubAppMatch(std::u16string_view name, std::u16string_view key) const noexcept {
    return Matches(SubAppNames, SubAppKeys, name, key);
}

bool CAppRuleSet::IsHideAppMatch(const IApp& app) const {
    AppRecordEx record{};
    app.FillAppInfo(record);
    return IsHideAppMatch(record.wzName, record.wzKeyString);
}

bool CAppRuleSet::IsHideAppMatch(std::u16string_view name, std::u16string_view key) const noexcept {
    return Matches(HideNames, HideKeys, name, key);
}

bool CAppRuleSet::AddIncludedDirectory(std::u16string_view path) {
    return IncludedDirectories.Add(WithoutTrailingBackslash(path));
}

bool CAppRuleSet::AddExcludedDirectory(std::u16string_view path) {
    return ExcludedDirectories.Add(WithoutTrailingBackslash(path));
}

}  // namespace roundup
