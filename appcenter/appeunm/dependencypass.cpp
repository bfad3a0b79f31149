// Provider keys: "SOFTWARE\Classes\Installer\Dependencies" has one key for each package that others may depend on. Its
// "DisplayName" is the package's, and below "Dependents" stand the provider keys of those that asked for it. The chain
// of the first dependents ends at the package that the user installed, whose provider key is its product code.
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "utility/reg.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr const char16_t* kDependencies = u"SOFTWARE\\Classes\\Installer\\Dependencies";

// Follows providers to their roots. Each key is read once, and every key on a way keeps the root that the way found,
// so a long chain is walked once, however many begin in it.
//
// Keys may name each other in a circle. A walk that would come to a key of its own way a second time ends, and the key
// in hand is the root: for a way that leads into a circle that is the one in front of where it came in.
class ProviderRoots {
  public:
    explicit ProviderRoots(bool view64) : m_view64(view64) {}

    const std::u16string& RootOf(std::u16string_view provider) {
        std::vector<std::u16string> way;
        std::unordered_map<std::u16string, std::size_t, NoCaseHash, NoCaseEqual> onWay;
        std::u16string at(provider);
        while (!m_roots.contains(at)) {
            const auto [met, isNew] = onWay.try_emplace(at, way.size());
            if (!isNew) {
                KeepCircle(way, met->second);
                way.resize(met->second);
                break;
            }
            way.push_back(at);
            std::u16string next = DependentOf(at);
            if (next.empty() || EqualsNoCase(next, at)) break;
            at = std::move(next);
        }
        const auto known = m_roots.find(at);
        const std::u16string root = known != m_roots.end() ? known->second : at;
        for (std::u16string& key : way) m_roots.try_emplace(std::move(key), root);
        return m_roots.find(provider)->second;
    }

  private:
    // Empty when the provider is a root: a key that is missing too.
    std::u16string DependentOf(const std::u16string& provider) const {
        CWFYRegKey key;
        const std::u16string path = std::u16string(kDependencies) + u'\\' + provider;
        if (Failed(key.Open(kHkeyLocalMachine, path.c_str(), m_view64, true))) return {};
        CWFYRegKey dependents;
        OwnedString found;
        if (Succeeded(dependents.Open(key.GetKeyHandle(), u"Dependents", m_view64, true))) {
            Ignore(dependents.EnumKey(found), u"a provider that nobody depends on is a root");
        } else {
            Ignore(key.GetString(u"", found), u"the same without a default value");
        }
        return std::u16string(found);
    }

    void KeepCircle(const std::vector<std::u16string>& way, std::size_t start) {
        m_roots.try_emplace(way[start], way.back());
        for (std::size_t i = start + 1; i < way.size(); ++i) m_roots.try_emplace(way[i], way[i - 1]);
    }

    const bool m_view64;
    std::unordered_map<std::u16string, std::u16string, NoCaseHash, NoCaseEqual> m_roots;
};

// Row 10, for the provider keys one after the other.
class DependencyPass {
  public:
    DependencyPass(CAppManager& manager, CAppList& main, CAppList& hide)
        : m_manager(manager), m_main(main), m_hide(hide), m_roots(Is64BitOS()) {
        for (std::size_t i = 0; i < main.size(); ++i) {
            if (!main[i]->ProductCode.IsNil()) m_mainByCode.Add(main[i]->ProductCode, i);
        }
        for (std::size_t i = 0; i < hide.size(); ++i) {
            if (!hide[i]->pwszName.IsEmpty()) m_hideByName.Add(hide[i]->pwszName, i);
        }
    }

    ResultCode Run() {
        CWFYRegKey key;
        const bool view64 = Is64BitOS();
        if (auto rc = key.Open(kHkeyLocalMachine, kDependencies, view64, true); Failed(rc)) return Pass(rc);
        std::size_t left = m_hide.size();
        while (left != 0 && m_manager.IsContinue() != 0) {
            OwnedString name;
            if (auto rc = key.EnumKey(name); Failed(rc)) {
                return Small(rc) == SmallCode::NoMoreItems ? kSuccess : Pass(rc);
            }
            if (name.IsEmpty()) return Fail(SmallCode::BadArgument);
            CWFYRegKey provider;
            OwnedString display;
            if (Failed(provider.Open(key.GetKeyHandle(), name.Text(), view64, true))) continue;
            if (Failed(provider.GetString(u"DisplayName", display)) || display.IsEmpty()) continue;
            if (Attach(name, display)) --left;
        }
        return kSuccess;
    }

  private:
    bool Attach(std::u16string_view provider, std::u16string_view display) {
        const std::size_t hidden = m_hideByName.First(display, m_hide);
        if (hidden == kNoPosition) return false;
        const Guid code = ParseGuid(m_roots.RootOf(provider), GuidForm::Braced);
        if (code.IsNil()) return false;
        const std::size_t found = m_mainByCode.First(code, m_main);
        if (found == kNoPosition) return false;
        LinkSubApp(*m_main[found], std::move(m_hide[hidden]), LinkReason::DependencyKey);
        return true;
    }

    CAppManager& m_manager;
    CAppList& m_main;
    CAppList& m_hide;
    ProviderRoots m_roots;
    FirstByCode m_mainByCode;
    FirstByText m_hideByName;
};

}  // namespace

ResultCode AttachByDependency(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    if (hide.empty() || main.empty()) return kSuccess;
    return DependencyPass(manager, main, hide).Run();
}

}  // namespace roundup
