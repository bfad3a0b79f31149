#include "appcenter/appeunm/uninstallsource.h"

#include <new>
#include <utility>

#include "appcenter/app/app.h"
#include "utility/reg.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr const char16_t* kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

}  // namespace

UninstallEnumerator::UninstallEnumerator(const IContinue& goOn, AppList& list, KeyHandle root, bool view64)
    : m_goOn(goOn),
      m_list(list),
      m_root(root),
      m_origin{.currentUser = root == kHkeyCurrentUser, .view64 = view64, .is64BitOS = Is64BitOS()} {
    Start();
}

// Write access is asked for throughout: a host that may write gets handles that can, all others get readable ones.
void UninstallEnumerator::Walk() {
    CWFYRegKey key;
    if (auto rc = key.Open(m_root, kUninstallKey, m_origin.view64, true); Failed(rc)) {
        Ignore(Pass(rc), u"a source that cannot open its key adds nothing");
        return;
    }
    m_list.reserve(key.KeyCount());
    while (m_goOn.IsContinue() != 0) {
        OwnedString name;
        if (auto rc = key.EnumKey(name); Failed(rc)) {
            if (Small(rc) != SmallCode::NoMoreItems) Ignore(Pass(rc), u"what was found stays");
            break;
        }
        if (auto rc = AddEntry(key, std::move(name)); Failed(rc)) {
            Ignore(Pass(rc), u"what was found stays");
            break;
        }
    }
}

ResultCode UninstallEnumerator::AddEntry(CWFYRegKey& uninstallKey, OwnedString name) {
    CWFYRegKey key;
    if (auto rc = key.Open(uninstallKey.GetKeyHandle(), name.Text(), m_origin.view64, true); Failed(rc)) {
        return PassQuiet(rc);
    }
    auto app = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
    if (!app) return FailQuiet(SmallCode::ObjectAllocation);
    m_values.Read(key);
    FillFromEntry(*app, std::move(name), m_values, m_origin);
    m_list.emplace_back(std::move(app));
    return kSuccess;
}

}  // namespace roundup
