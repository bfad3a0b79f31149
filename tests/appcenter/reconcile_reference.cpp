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
        AttachHidden(LinkReason::Source, IsFromSource);
        Shorten();
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
