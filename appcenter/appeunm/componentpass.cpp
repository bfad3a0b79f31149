// Shared components: below "SOFTWARE\Microsoft\Windows\CurrentVersion\Installer\UserData\<sid>\Components" each
// component has a key, and in it a value for each product that installed the component: named by the product's packed
// code, with the component's key path in it.
#include <optional>
#include <string>
#include <utility>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/hidepasses.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/locationpasses.h"
#include "utility/reg.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr const char16_t* kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::size_t kLeastPathBytes = 8;  // "C:\" and the terminator

// Row 16.
class ComponentPass {
  public:
    ComponentPass(CAppManager& manager, CAppList& main, CAppList& hide)
        : m_manager(manager), m_main(main), m_hide(hide), m_view64(Is64BitOS()) {
        for (std::size_t i = 0; i < hide.size(); ++i) {
            if (hide[i]->ProductCode.IsNil()) continue;
            m_hideByCode.Add(hide[i]->ProductCode, i);
            ++m_left;
        }
    }

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
    // Without a hidden code left no component can say anything.
    bool GoesOn() const { return m_left != 0 && m_manager.IsContinue() != 0; }

    void WalkComponents(CWFYRegKey& components) {
        OwnedString name;
        while (GoesOn() && Succeeded(components.EnumKey(name))) {
            CWFYRegKey component;
            if (Failed(component.Open(components.GetKeyHandle(), name.Text(), m_view64, false))) continue;
            RegValueView value;
            while (GoesOn()) {
                const ResultCode rc = component.EnumValueView(value);
                if (Small(rc) == SmallCode::NoMoreItems) break;
                if (Succeeded(rc)) Take(value);
            }
        }
    }

    void Take(const RegValueView& value) {
        if (value.Data().size() < kLeastPathBytes || value.Type() != kRegSz) return;
        const Guid code = ParseGuid(value.Name(), GuidForm::Packed);
        if (code.IsNil()) return;
        const std::size_t hidden = m_hideByCode.First(code, m_hide);
        if (hidden == kNoPosition) return;
        // A "?" in place of the colon marks a path that counts its users.
        m_keyPath.assign(value.Text());
        if (m_keyPath.size() > 1) m_keyPath[1] = u':';
        if (!m_locations) m_locations.emplace(m_manager, m_main);
        const std::size_t found = m_locations->First(m_keyPath);
        if (found == kNoPosition) return;
        m_locations->Add(*m_hide[hidden], found);
        LinkSubApp(*m_main[found], std::move(m_hide[hidden]), LinkReason::SharedComponent);
        --m_left;
    }

    CAppManager& m_manager;
    CAppList& m_main;
    CAppList& m_hide;
    const bool m_view64;
    std::optional<LocationPrefixes> m_locations;  // made when a component of a hidden application turns up
    FirstByCode m_hideByCode;
    std::size_t m_left = 0;  // hidden applications with a code
    std::u16string m_keyPath;
};

}  // namespace

ResultCode AttachBySharedComponent(CAppManager& manager, CAppList& main, CAppList& hide) {
    const GapCloser closer(hide);
    if (hide.empty()) return kSuccess;
    return ComponentPass(manager, main, hide).Run();
}

}  // namespace roundup
