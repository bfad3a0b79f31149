#include <algorithm>
#include <memory>
#include <string_view>

#include "appcenter/app/app.h"
#include "appcenter/app/normalize.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/appmatch.h"
#include "utility/casemap.h"
#include "utility/log.h"

namespace roundup {
namespace {

void LogFields(const CApp& app) {
    const std::pair<const char*, const OwnedString&> fields[] = {
        {"pwszName", app.pwszName},
        {"pwszKeyString", app.pwszKeyString},
        {"pwszVersion", app.pwszVersion},
        {"pwszInstallLoc", app.pwszInstallLoc},
        {"pwszUnInstallProgram", app.pwszUnInstallProgram},
        {"pwszIconProgram", app.pwszIconProgram},
        {"pwszMsiPath", app.pwszMsiPath},
        {"pwszInstallSource", app.pwszInstallSource},
        {"pwszRealInstallLoc", app.pwszRealInstallLoc},
    };
    for (const auto& [name, text] : fields) {
        if (!text.IsEmpty()) TraceLine(u"%S : \t%s", name, text);
    }
}

}  // namespace

// The first application of the list that matches, not the best one: a list has one application for a key and a name.
RefPtr<IApp> CAppManager::FindApp(std::u16string_view key, std::u16string_view name) {
    const LockGuard guard(m_lock);
    const auto found = std::ranges::find_if(m_apps, [key, name](const RefPtr<IApp>& app) {
        return app->IsAppx() == 0 && IsKeyAndNameMatch(key, name, static_cast<const CApp&>(*app));
    });
    return found != m_apps.end() ? *found : RefPtr<IApp>();
}

// A package tells its full name as the key string of its record.
RefPtr<IApp> CAppManager::FindPackage(std::u16string_view fullName) {
    const auto record = std::make_unique<AppRecordEx>();
    const LockGuard guard(m_lock);
    const auto found = std::ranges::find_if(m_packages, [&record, fullName](const RefPtr<IApp>& app) {
        app->FillAppInfo(*record);
        return EqualsNoCase(record->wzKeyString, fullName);
    });
    return found != m_packages.end() ? *found : RefPtr<IApp>();
}

ResultCode CAppManager::GetGatheredApp(const char16_t* key, const char16_t* name, std::uint64_t flags, IApp** app) {
    const std::u16string_view wanted = TextOrNull(key).View();
    if (app == nullptr || wanted.empty()) return Fail(SmallCode::BadArgument);
    const bool isPackage = (flags & AppFlags::kStorePackage) != 0;
    RefPtr<IApp> found = isPackage ? FindPackage(wanted) : FindApp(wanted, TextOrNull(name).View());
    if (!found) return Fail(isPackage ? SmallCode::GeneralFailure : SmallCode::BadArgument);
    if (auto rc = found->Gather(nullptr, nullptr); Failed(rc)) return Pass(rc);
    if (!isPackage) {
        auto& entry = static_cast<CApp&>(*found);
        NormalizePaths(entry);
        LogFields(entry);
    }
    *app = found.Detach();
    return kSuccess;
}

}  // namespace roundup
