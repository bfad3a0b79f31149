#include "appcenter/appeunm/suitegroup.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/lookahead.h"
#include "utility/casemap.h"
#include "utility/log.h"
#include "utility/reg.h"

namespace roundup {
namespace {

constexpr std::u16string_view kFamilyNames[] = {u"Microsoft Office", u"Microsoft 365", u"Microsoft Visio",
                                                u"Microsoft Project"};
constexpr std::u16string_view kSiblingYears[] = {u"2007", u"2010", u"2013", u"2016"};
constexpr std::u16string_view kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr int kFirstSharedYear = 2013;

// Every member of a suite gets a copy of every part, and looks at the parts of all others for that, so a registry that
// was made up could ask for the square of its own size. No machine that was ever seen comes near these.
constexpr std::size_t kMostCopies = 0x10000;
constexpr std::size_t kMostLooks = 0x1000000;

// Counts the copies and the looks of a pass down.
class Allowance {
  public:
    bool TakeCopy() { return Take(m_copies); }
    bool TakeLook() { return Take(m_looks); }

  private:
    static bool Take(std::size_t& left) {
        if (left == 0) return false;
        if (--left == 0) TraceLine(u"[TRC] suite parts : more than are believed");
        return true;
    }

    std::size_t m_copies = kMostCopies;
    std::size_t m_looks = kMostLooks;
};

// All names of the family begin alike, and hardly any other name has that.
bool IsOfficeFamily(const CApp& app) {
    if (app.pwszKeyString.IsEmpty() || !ContainsNoCase(app.pwszName, u"Microsoft ")) return false;
    return std::ranges::any_of(kFamilyNames,
                               [&app](std::u16string_view name) { return ContainsNoCase(app.pwszName, name); });
}

// The program that changes an installation, from its Uninstall key in the 64-bit view, else in the 32-bit one. No
// value without a key; an empty text for a key that does not tell.
std::optional<OwnedString> ReadModifyPath(const CApp& app) {
    const std::u16string path = std::u16string(kUninstallKey).append(app.pwszKeyString);
    CWFYRegKey key;
    if (Failed(key.Open(kHkeyLocalMachine, path.c_str(), true, false)) &&
        Failed(key.Open(kHkeyLocalMachine, path.c_str(), false, false))) {
        return std::nullopt;
    }
    OwnedString text;
    Ignore(key.GetString(u"ModifyPath", text), u"a missing value is an empty text");
    return text;
}

// "COMPONENTS" with a year behind the last "_".
bool IsSharedComponent(const CApp& app) {
    const std::u16string_view text = app.pwszTypeDes;
    if (!ContainsNoCase(text, u"COMPONENTS")) return false;
    const std::size_t mark = text.rfind(u'_');
    if (mark == std::u16string_view::npos) return false;
    int year = 0;
    for (const char16_t c : text.substr(mark + 1)) {
        if (c < u'0' || c > u'9' || year > 9999) break;
        year = year * 10 + (c - u'0');
    }
    return year >= kFirstSharedYear;
}

CAppList TakeSharedComponents(CAppList& hide) {
    const GapCloser closer(hide);
    CAppList components;
    for (RefPtr<CApp>& app : hide) {
        if (IsSharedComponent(*app)) components.push_back(std::move(app));
    }
    return components;
}

bool AppendCopy(const CApp& part, CApp& suite, Allowance& allowance) {
    if (!allowance.TakeCopy()) return false;
    RefPtr<CApp> copy = CloneApp(part);
    if (!copy) return false;
    copy->eLinkReason = LinkReason::Suite;
    suite.SubApps.emplace_back(std::move(copy));
    return true;
}

// The sub-applications of one application, as far as a code-or-package match asks for them: by the code when both
// have one, else by the package.
class PartIndex {
  public:
    explicit PartIndex(const CApp& app) {
        for (const RefPtr<IApp>& sub : app.SubApps) {
            if (const auto* const part = dynamic_cast<const CApp*>(sub.Get())) Add(*part);
        }
    }
    bool Has(const CApp& part) const {
        if (!part.ProductCode.IsNil() && m_codes.contains(part.ProductCode)) return true;
        if (part.pwszMsiPath.IsEmpty()) return false;
        return (part.ProductCode.IsNil() ? m_packages : m_packagesWithoutCode).contains(part.pwszMsiPath);
    }
    void Add(const CApp& part) {
        const bool hasCode = !part.ProductCode.IsNil();
        if (hasCode) m_codes.insert(part.ProductCode);
        if (part.pwszMsiPath.IsEmpty()) return;
        m_packages.insert(part.pwszMsiPath);
        if (!hasCode) m_packagesWithoutCode.insert(part.pwszMsiPath);
    }

  private:
    using Packages = std::unordered_set<std::u16string_view, NoCaseHash, NoCaseEqual>;

    std::unordered_set<Guid> m_codes;
    Packages m_packages;
    Packages m_packagesWithoutCode;
};

// What one member has and the other has not. Only a part whose key is a code can be told from the others.
void CopyParts(const CApp& from, CApp& to, PartIndex& parts, Allowance& allowance) {
    for (const RefPtr<IApp>& sub : from.SubApps) {
        const auto* const part = dynamic_cast<const CApp*>(sub.Get());
        if (part == nullptr || !allowance.TakeLook()) continue;
        const Guid code = ParseGuid(part->pwszKeyString, GuidForm::Braced);
        if (code.IsNil() || parts.Has(*part) || !AppendCopy(*part, to, allowance)) continue;
        parts.Add(static_cast<const CApp&>(*to.SubApps.back()));
        to.RelatedCodes.erase(code);
    }
}

using Members = std::vector<CApp*>;

// Members of each year, in the order of kSiblingYears, which is that of their texts too.
std::vector<Members> CollectSiblings(const IContinue& goOn, const CAppList& main) {
    std::vector<Members> years(std::size(kSiblingYears));
    for (std::size_t i = 0; i < main.size(); ++i) {
        if (goOn.IsContinue() == 0) break;
        LookAhead<&CApp::pwszName>(main, i);
        const RefPtr<CApp>& app = main[i];
        if (!IsOfficeFamily(*app)) continue;
        const std::optional<OwnedString> modify = ReadModifyPath(*app);
        if (!modify || ContainsNoCase(*modify, u"ClickToRun")) continue;
        const auto* const year = std::ranges::find_if(
            kSiblingYears, [&app](std::u16string_view text) { return ContainsNoCase(app->pwszName, text); });
        if (year != std::end(kSiblingYears)) years[static_cast<std::size_t>(year - kSiblingYears)].push_back(app.Get());
    }
    return years;
}

}  // namespace

// Row 11. A component leaves the hide list even when no suite takes it.
ResultCode GroupSuiteComponents(CAppManager& manager, CAppList& main, CAppList& hide) {
    const CAppList components = TakeSharedComponents(hide);
    if (components.empty()) return kSuccess;
    Members suites;
    for (const RefPtr<CApp>& app : main) {
        if (manager.IsContinue() == 0) return kSuccess;
        if (!IsOfficeFamily(*app)) continue;
        const std::optional<OwnedString> modify = ReadModifyPath(*app);
        if (!modify) continue;
        const bool hasSetup = ContainsNoCase(*modify, u"setup.exe");
        if (ContainsNoCase(*modify, u"ClickToRun") || !hasSetup) suites.push_back(app.Get());
    }
    Allowance allowance;
    for (const RefPtr<CApp>& component : components) {
        for (CApp* const suite : suites) {
            if (manager.IsContinue() == 0) return kSuccess;
            if (!AppendCopy(*component, *suite, allowance)) break;
        }
    }
    return kSuccess;
}

// Row 12. What a member has been given already counts as its own when the next member looks.
ResultCode GroupSuiteSiblings(CAppManager& manager, CAppList& main, CAppList& /*hide*/) {
    Allowance allowance;
    for (const Members& members : CollectSiblings(manager, main)) {
        if (members.size() < 2) continue;
        for (CApp* const to : members) {
            PartIndex parts(*to);
            for (const CApp* const from : members) {
                if (manager.IsContinue() == 0 || !allowance.TakeLook()) return kSuccess;
                if (from != to) CopyParts(*from, *to, parts, allowance);
            }
        }
    }
    return kSuccess;
}

}  // namespace roundup
