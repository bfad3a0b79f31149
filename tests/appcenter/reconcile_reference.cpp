#include "tests/appcenter/reconcile_reference.h"

#include <algorithm>
#include <functional>
#include <set>

#include "appcenter/appeunm/linksubapp.h"
#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {
namespace {

using App = RefPtr<CApp>;
using Test = std::function<bool(const CApp&)>;

bool BothEqual(std::u16string_view a, std::u16string_view b) { return !a.empty() && EqualsNoCase(a, b); }
const CApp& SubOf(const RefPtr<IApp>& sub) { return static_cast<const CApp&>(*sub); }

CAppList::iterator FirstOf(CAppList& list, const Test& test) {
    return std::ranges::find_if(list, [&](const App& app) { return test(*app); });
}

class Reference {
  public:
    explicit Reference(const World& world) : m_world(world), m_installs(MakeList(world.installs)) {}

    CAppList Run() {
        MergeAll();
        AttachPatches();
        Claim();
        AttachHidden(LinkReason::Location, [](const CApp& m, const CApp& h) {
            return !h.pwszInstallLoc.IsEmpty() && IsLocationPrefix(h.pwszInstallLoc, m);
        });
        AttachHidden(LinkReason::Location, IsSameFolder);
        Dependencies();
        AttachHidden(LinkReason::Source, IsFromSource);
        AttachHidden(LinkReason::Runtime, IsSameRuntime);
        AttachHidden(LinkReason::Rule, [this](const CApp& m, const CApp& h) {
            const RuleNames rules = RulesOf(m);
            return Matches(h, rules.hideNames, rules.hideKeys);
        });
        Components();
        Compatibility();
        Shorten();
        SubAppRules();
        return std::move(m_main);
    }

  private:
    void MergeAll() {
        for (const App& app : MakeList(m_world.uninstalls)) {
            const auto same = FirstOf(m_main, [&](const CApp& other) {
                if (!BothEqual(app->pwszKeyString, other.pwszKeyString)) return false;
                return app->pwszName.IsEmpty() || other.pwszName.IsEmpty() ||
                       EqualsNoCase(app->pwszName, other.pwszName);
            });
            if (same == m_main.end()) {
                m_main.push_back(app);
            } else {
                (*same)->MergeFrom(*app);
            }
        }
        for (const App& app : m_main) {
            if (app->ProductCode.IsNil()) continue;
            const auto found = FirstOf(m_installs, [&](const CApp& record) {
                return record.ProductCode.IsNil() ? BothEqual(app->pwszMsiPath, record.pwszMsiPath)
                                                  : record.ProductCode == app->ProductCode;
            });
            if (found == m_installs.end()) continue;
            app->MergeFrom(**found);
            m_installs.erase(found);
        }
    }

    void AttachPatches() {
        for (const App& patch : m_installs) {
            const Guid code = patch->ProductCode;
            if (code.IsNil() || !EndsWithNoCase(patch->pwszMsiPath, u".msp")) continue;
            const auto found = FirstOf(m_main, [&](const CApp& app) { return app.RelatedCodes.contains(code); });
            if (found == m_main.end()) continue;
            CApp& product = **found;
            if (patch->pwszKeyString.IsEmpty()) AssignString(patch->pwszKeyString, product.pwszKeyString);
            if (patch->pwszKeyString.IsEmpty()) patch->pwszKeyString = FormatGuid(code, GuidForm::Braced);
            if (patch->pwszName.IsEmpty()) AssignString(patch->pwszName, product.pwszName);
            product.RelatedCodes.erase(code);
            LinkSubApp(product, patch, LinkReason::Code);
        }
    }

    void Claim() {
        std::set<CApp*> claimed;
        for (const App& a : m_main) {
            for (const App& b : m_main) {
                if (a.Get() == b.Get() || b->ProductCode.IsNil() || claimed.contains(b.Get())) continue;
                if (!a->RelatedCodes.contains(b->ProductCode)) continue;
                a->RelatedCodes.erase(b->ProductCode);
                LinkSubApp(*a, b, LinkReason::Code);
                claimed.insert(b.Get());
            }
        }
        for (const App& d : m_main) {
            if (claimed.contains(d.Get())) continue;
            const auto parent =
                FirstOf(m_main, [&](const CApp& p) { return BothEqual(d->pwszParentDisplayName, p.pwszName); });
            if (parent == m_main.end() || parent->Get() == d.Get()) continue;
            LinkSubApp(**parent, d, LinkReason::ParentName);
            claimed.insert(d.Get());
        }
        CAppList left;
        for (const App& x : m_main) {
            if (claimed.contains(x.Get()) || x->pwszName.IsEmpty() || x->pwszKeyString.IsEmpty()) continue;
            if (x->HasLocation()) ((x->qwFlags & AppFlags::kNotTopLevel) != 0 ? m_hide : left).push_back(x);
        }
        // What is left over hangs in circles, which only let go of each other here.
        for (const App& x : m_main) {
            if (claimed.contains(x.Get()) && !IsBelow(*x, left) && !IsBelow(*x, m_hide)) m_circles.push_back(x);
        }
        m_main = left;
    }
    static bool IsBelow(const CApp& app, const CAppList& roots) {
        std::vector<const CApp*> open;
        for (const App& root : roots) open.push_back(root.Get());
        while (!open.empty()) {
            const CApp* const next = open.back();
            open.pop_back();
            if (next == &app) return true;
            for (const auto& sub : next->SubApps) open.push_back(&SubOf(sub));
        }
        return false;
    }

    // One hidden record after the other, each to the first that fits. The passes that go the other way round, with the
    // main list outside, come to the same.
    void AttachHidden(LinkReason reason, const std::function<bool(const CApp&, const CApp&)>& fits) {
        std::erase_if(m_hide, [&](const App& h) {
            const auto found = FirstOf(m_main, [&](const CApp& m) { return fits(m, *h); });
            if (found == m_main.end()) return false;
            LinkSubApp(**found, h, reason);
            return true;
        });
    }
    static bool IsLocationPrefix(std::u16string_view path, const CApp& app) {
        if (!app.pwszInstallLoc.IsEmpty() && StartsWithNoCase(path, app.pwszInstallLoc)) return true;
        return std::ranges::any_of(app.SubApps, [path](const auto& sub) { return IsLocationPrefix(path, SubOf(sub)); });
    }
    static bool IsSameFolder(const CApp& m, const CApp& h) {
        std::u16string_view a = m.pwszInstallLoc;
        std::u16string_view b = h.pwszInstallLoc;
        if (a.size() > b.size()) std::swap(a, b);
        return !a.empty() && StartsWithNoCase(b, a) && (a.size() == b.size() || b[a.size()] == u'\\');
    }
    static bool IsFromSource(const CApp& m, const CApp& h) {
        const std::u16string_view source = h.pwszInstallSource;
        const auto begins = [source](const CApp& app) {
            return !app.pwszInstallSource.IsEmpty() && StartsWithNoCase(source, app.pwszInstallSource);
        };
        if (source.empty()) return false;
        if (!m.pwszInstallSource.IsEmpty()) return begins(m);
        return std::ranges::any_of(m.SubApps, [&](const auto& sub) { return begins(SubOf(sub)); });
    }
    // The names of the test's runtimes have the year at its place and end in the architecture.
    static int YearOf(const CApp& app) {
        const std::string name(app.pwszName.View().begin(), app.pwszName.View().end());
        return name.starts_with("Microsoft Visual C++ ") ? std::stoi(name.substr(21)) : 0;
    }
    static bool IsSameRuntime(const CApp& m, const CApp& h) {
        const int year = YearOf(h);
        const std::u16string_view a = m.pwszVersion;
        const std::u16string_view b = h.pwszVersion;
        if (year == 0 || YearOf(m) == 0 || a.empty() || b.empty()) return false;
        if (m.pwszName.View().back() != h.pwszName.View().back()) return false;
        if (year == 2005 || year == 2008) return StartsWithNoCase(a, b) || StartsWithNoCase(b, a);
        return year >= 2009 && year <= 2019 && YearOf(m) == year;
    }

    void Dependencies() {
        for (const auto& [key, provider] : m_world.providers) {
            const auto hidden =
                FirstOf(m_hide, [&p = provider](const CApp& h) { return BothEqual(p.display, h.pwszName); });
            if (hidden == m_hide.end()) continue;
            const Guid code = ParseGuid(RootOf(key), GuidForm::Braced);
            const auto found = FirstOf(m_main, [&](const CApp& m) { return !code.IsNil() && m.ProductCode == code; });
            if (found == m_main.end()) continue;
            LinkSubApp(**found, *hidden, LinkReason::DependencyKey);
            m_hide.erase(hidden);
        }
    }
    std::u16string RootOf(const std::u16string& start) const {
        std::set<std::u16string> seen;
        for (std::u16string key = start;;) {
            seen.insert(key);
            const auto at = m_world.providers.find(key);
            if (at == m_world.providers.end()) return key;
            const std::u16string& next = at->second.dependent.empty() ? at->second.value : at->second.dependent;
            if (next.empty() || seen.contains(next)) return key;
            key = next;
        }
    }

    RuleNames RulesOf(const CApp& app) const {
        for (const auto& [key, rules] : m_world.rules) {
            if (EqualsNoCase(key, app.pwszKeyString)) return rules;
        }
        return {};
    }
    static bool Matches(const CApp& app, const std::vector<std::u16string>& names,
                        const std::vector<std::u16string>& keys) {
        return std::ranges::any_of(names, [&](const auto& name) { return ContainsNoCase(app.pwszName, name); }) ||
               std::ranges::any_of(keys, [&](const auto& key) { return BothEqual(key, app.pwszKeyString); });
    }

    void Components() {
        for (const auto& [code, path] : m_world.components) {
            const auto hidden = FirstOf(m_hide, [&c = code](const CApp& h) { return h.ProductCode == CodeOf(c); });
            if (hidden == m_hide.end()) continue;
            const auto found = FirstOf(m_main, [&p = path](const CApp& m) { return IsLocationPrefix(p, m); });
            if (found == m_main.end()) continue;
            LinkSubApp(**found, *hidden, LinkReason::SharedComponent);
            m_hide.erase(hidden);
        }
    }

    void Compatibility() {
        const CAppList all(m_main);
        for (const App& p : all) {
            const auto list = std::ranges::find_if(
                m_world.lists, [&p](const auto& entry) { return EqualsNoCase(entry.first, p->pwszKeyString); });
            if (list == m_world.lists.end()) continue;
            for (const std::u16string& name : list->second) {
                for (const App& x : CAppList(m_main)) {
                    if (x.Get() == p.Get() || !BothEqual(name, x->pwszKeyString)) continue;
                    std::erase_if(m_main, [&x](const App& app) { return app.Get() == x.Get(); });
                    LinkSubApp(*p, x, LinkReason::CompatibilityList);
                }
            }
        }
        for (const App& x : all) {
            if (!IsBelow(*x, m_main)) m_circles.push_back(x);
        }
    }

    void Shorten() {
        for (const App& m : m_main) {
            const std::u16string own(m->pwszInstallLoc);
            for (const auto& sub : m->SubApps) {
                const std::u16string_view folder = SubOf(sub).pwszInstallLoc;
                if (folder.empty() || folder.size() >= own.size() || own[folder.size()] != u'\\') continue;
                if (ContainsNoCase(own, folder) && folder.size() < m->pwszInstallLoc.Length()) {
                    AssignString(m->pwszInstallLoc, folder);
                }
            }
        }
    }

    void SubAppRules() {
        CAppList owners;
        CAppList others;
        for (const App& m : m_main) {
            const RuleNames rules = RulesOf(*m);
            (rules.subNames.empty() && rules.subKeys.empty() ? others : owners).push_back(m);
        }
        for (const App& a : owners) {
            const RuleNames rules = RulesOf(*a);
            std::erase_if(others, [&](const App& b) {
                if (!Matches(*b, rules.subNames, rules.subKeys)) return false;
                LinkSubApp(*a, b, LinkReason::Rule);
                return true;
            });
        }
        m_main = owners;
        m_main.insert(m_main.end(), others.begin(), others.end());
    }

  public:
    ~Reference() {
        for (const App& app : m_circles) app->SubApps.clear();
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

  private:
    const World& m_world;
    CAppList m_installs;
    CAppList m_main;
    CAppList m_hide;
    CAppList m_circles;
};

}  // namespace

CAppList ReferenceForest(const World& world) { return Reference(world).Run(); }

}  // namespace roundup
