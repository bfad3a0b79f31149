// Shared components: below "SOFTWARE\Microsoft\Windows\CurrentVersion\Installer\UserData\<sid>\Components" each
// component has a key, and in it a value for each product that installed the component: named by the product's packed
// code, with the component's key path in it.
#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/locationpasses.h"
#include "utility/flatmap.h"
#include "utility/reg.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr const char16_t* kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::size_t kLeastPathBytes = 8;  // "C:\" and the terminator

// A component of a hidden application.
struct Component {
    Guid code;
    std::u16string keyPath;
};

// Reads the components of all users, those of other applications left out.
class ComponentWalk {
  public:
    ComponentWalk(const IContinue& goOn, const CAppList& hide) : m_goOn(goOn), m_view64(Is64BitOS()) {
        for (const RefPtr<CApp>& app : hide) {
            if (!app->ProductCode.IsNil()) m_wanted.TryAdd(app->ProductCode, 0);
        }
    }
    const std::vector<Component>& Found() const noexcept { return m_found; }

    // Without a hidden code no component can say anything.
    ResultCode Run() {
        CWFYRegKey users;
        if (auto rc = users.Open(kHkeyLocalMachine, kUserData, m_view64, true); Failed(rc)) return Pass(rc);
        OwnedString name;
        while (GoesOn() && Succeeded(users.EnumKey(name))) {
            const std::u16string path = std::u16string(name) + u"\\Components";
            CWFYRegKey components;
            if (Failed(components.Open(users.GetKeyHandle(), path.c_str(), m_view64, false))) continue;
            WalkComponents(components);
        }
        return kSuccess;
    }

  private:
    bool GoesOn() const { return !m_wanted.IsEmpty() && m_goOn.IsContinue() != 0; }

    void WalkComponents(CWFYRegKey& components) {
        OwnedString name;
        while (GoesOn() && Succeeded(components.EnumKey(name))) {
            CWFYRegKey component;
            if (Failed(component.Open(components.GetKeyHandle(), name.Text(), m_view64, false))) continue;
            RegValueView value;
            for (;;) {
                const ResultCode rc = component.EnumValueView(value);
                if (Small(rc) == SmallCode::NoMoreItems) break;
                if (Succeeded(rc)) Take(value);
            }
        }
    }

    void Take(const RegValueView& value) {
        if (value.Data().size() < kLeastPathBytes || value.Type() != kRegSz) return;
        const Guid code = ParseGuid(value.Name(), GuidForm::Packed);
        if (code.IsNil() || m_wanted.Find(code) == nullptr) return;
        std::u16string path((value.Data().size() + 1) / sizeof(char16_t), u'\0');
        std::memcpy(path.data(), value.Data().data(), value.Data().size());
        // A "?" in place of the colon marks a path that counts its users.
        path[1] = u':';
        path.resize(std::min(path.find(u'\0'), path.size()));
        m_found.push_back({code, std::move(path)});
    }

    const IContinue& m_goOn;
    const bool m_view64;
    FlatMap<Guid, std::uint8_t, std::hash<Guid>, std::equal_to<Guid>> m_wanted;
    std::vector<Component> m_found;
};

// Row 16, for the components one after the other.
void AttachToFolders(const IContinue& goOn, const std::vector<Component>& components, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    LocationOwners owners;
    for (const Component& component : components) owners.AddPath(component.keyPath);
    owners.Search(goOn, main);
    FirstByCode hidden;
    for (std::size_t i = 0; i < hide.size(); ++i) {
        if (!hide[i]->ProductCode.IsNil()) hidden.Add(hide[i]->ProductCode, i);
    }
    for (std::size_t i = 0; i < components.size() && goOn.IsContinue() != 0; ++i) {
        const std::size_t app = hidden.First(components[i].code, hide);
        if (app == kNoPosition) continue;
        const std::size_t found = owners.First(i, components[i].keyPath);
        if (found == kNoPosition) continue;
        owners.Add(*hide[app], found);
        LinkSubApp(*main[found], std::move(hide[app]), LinkReason::SharedComponent);
    }
}

}  // namespace

ResultCode AttachBySharedComponent(CAppManager& manager, CAppList& main, CAppList& hide) {
    if (hide.empty()) return kSuccess;
    ComponentWalk walk(manager, hide);
    if (auto rc = walk.Run(); Failed(rc)) return PassQuiet(rc);
    if (!walk.Found().empty()) AttachToFolders(manager, walk.Found(), main, hide);
    return kSuccess;
}

}  // namespace roundup
