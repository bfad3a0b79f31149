#include "appcenter/appsoftdata/appsoftdata.h"

#include "appcenter/app/app.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "appcenter/sqlserverstruct/softdatalock.h"
#include "appcenter/sqlserverstruct/sqlservergather.h"
#include "platform/machine.h"
#include "utility/boundary.h"

namespace roundup {

namespace {

constexpr std::uint32_t kApplicationData = 26;  // CSIDL_APPDATA

using Locator = ResultCode (*)(const CApp&, CAppRuleSet&);

// The database server's own failures are told by its log lines alone.
ResultCode LocateSqlServer(const CApp& app, CAppRuleSet& ruleSet) {
    Ignore(CSqlServerGather::AddSqlServerRules(app, &ruleSet), u"an application that is no server adds no rule");
    return kSuccess;
}

// In the order in which they are asked; the first that matches is the one.
struct KnownApplication {
    OwnedString CApp::*text;
    std::u16string_view word;
    Locator locate;
};
constexpr KnownApplication kKnown[] = {
    {&CApp::pwszName, u"Mozilla Thunderbird", LocateThunderbird},
    {&CApp::pwszName, u"Windows Live Mail", LocateLiveMail},
    {&CApp::pwszKeyString, u"WinLiveSuite", LocateLiveMail},
    {&CApp::pwszName, u"Minecraft Launcher", LocateMinecraft},
    {&CApp::pwszName, u"MySQL Installer", LocateMySql},
    {&CApp::pwszKeyString, u"Microsoft SQL Server", LocateSqlServer},
};

// A member of a suite is asked for its year alone, whatever its name is.
Locator FindLocator(const CApp& app) {
    if (!app.pwszTypeDes.IsEmpty()) return LocateOutlook;
    for (const KnownApplication& known : kKnown) {
        if (ContainsNoCase(app.*known.text, known.word)) return known.locate;
    }
    return nullptr;
}

}  // namespace

ResultCode GetRoamingFolder(std::u16string& folder) {
    char16_t path[260] = {};
    if (!CurrentMachine().Shell().GetFolderPath(kApplicationData, path)) return Fail(SmallCode::GeneralFailure);
    folder = path;
    if (!folder.ends_with(u'\\')) folder.push_back(u'\\');
    return kSuccess;
}

std::u16string Unescape(std::u16string_view text) {
    std::u16string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        plain.push_back(text[at]);
        if (text.substr(at).starts_with(u"\\\\")) ++at;
    }
    return plain;
}

ResultCode AddSoftDataRules(const CApp* app, CAppRuleSet* ruleSet) {
    if (app == nullptr || ruleSet == nullptr) return Fail(SmallCode::GeneralFailure);
    const LockGuard guard(g_SoftDataLock);
    if ((app->qwFlags & AppFlags::kNotTopLevel) != 0) return kSuccess;
    const Locator locate = FindLocator(*app);
    if (locate == nullptr) return kSuccess;
    const ResultCode rc =
        AtBoundary([&] { return locate(*app, *ruleSet); }, [] { return FailQuiet(SmallCode::ObjectAllocation); });
    return Failed(rc) ? Pass(rc) : kSuccess;
}

}  // namespace roundup
