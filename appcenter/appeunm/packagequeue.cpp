#include "appcenter/appeunm/packagequeue.h"

#include <new>
#include <string_view>
#include <utility>

#include "appcenter/msicrash/msicrash.h"
#include "msianalyzer/imsiproductinfo.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/filesearch.h"
#include "utility/guid.h"
#include "utility/result.h"
#include "utility/specialfolders.h"
#include "utility/suitenames.h"

namespace roundup {
namespace {

// A text that a package may lack, read for its own sake: the results of the reads are not looked at.
OwnedString TextOf(IMSIProductInfo& info, ResultCode (IMSIProductInfo::*getter)(OwnedString*)) {
    OwnedString text;
    Ignore((info.*getter)(&text), u"a package that cannot be read leaves its texts empty");
    return text;
}

// What a package tells fills what the books left open.
void FillFromPackage(IMSIProductInfo& info, CApp& app, OwnedString& code) {
    Ignore(info.Open(app.pwszMsiPath.Get()), u"the reads that follow come out empty");
    OwnedString name = TextOf(info, &IMSIProductInfo::GetProductName);
    OwnedString version = TextOf(info, &IMSIProductInfo::GetProductVersion);
    Ignore(info.GetProductIcon(&app.pIconData, &app.dwIconDataSize), u"an application may have no icon");
    std::uint32_t suite = SuiteNumber::kNone;
    Ignore(info.GetSuiteFlags(&suite), u"most products belong to no suite");
    code = TextOf(info, &IMSIProductInfo::GetProductCode);
    Ignore(info.Close(), u"nothing was open");
    AssignString(app.pwszTypeDes, SuiteTypeDes(suite));
    AssignString(app.pwszType, SuiteType(suite));
    if (app.pwszVersion.IsEmpty() && !version.IsEmpty()) app.pwszVersion = std::move(version);
    if (app.pwszName.IsEmpty() && !name.IsEmpty()) app.pwszName = std::move(name);
}

bool IsPackageName(std::u16string_view name) { return EndsWithNoCase(name, u".msi") || EndsWithNoCase(name, u".msp"); }

}  // namespace

PackageQueue::PackageQueue(const IContinue& goOn, AppList& results)
    : m_goOn(goOn), m_results(results), m_thread(this), m_started(m_thread.Start()) {}

PackageQueue::~PackageQueue() {
    m_jobs.Close();
    if (m_started) {
        m_thread.WaitEnd();
    } else {
        Run();
    }
    m_jobs.CloseAndDiscard();
}

void PackageQueue::AddIfNew(RefPtr<CApp> app) {
    const OwnedString& path = app->pwszMsiPath;
    if (path.IsEmpty() || m_seen.Contains(path) || !m_seen.Add(path)) return;
    AddPackage(std::move(app));
}

void PackageQueue::AddPackage(RefPtr<CApp> app) { m_jobs.Add(std::move(app)); }

void PackageQueue::ScanInstallerFolder() {
    char16_t windows[260] = {};
    const auto number = static_cast<std::uint32_t>(Csidl::Windows);
    if (!CurrentMachine().Shell().GetFolderPath(number, windows) || windows[0] == u'\0') return;
    const std::u16string folder = std::u16string(windows) + u"\\Installer\\";
    FileSearch search((folder + u"*").c_str());
    while (m_goOn.IsContinue() != 0 && search.Next()) {
        if (search.IsFolder() || !IsPackageName(search.Name())) continue;
        const std::u16string path = folder + std::u16string(search.Name());
        if (m_seen.Contains(path)) continue;
        auto app = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
        if (!app || !app->pwszMsiPath.Assign(path)) {
            Ignore(Fail(SmallCode::ObjectAllocation), u"the packages found so far stay");
            return;
        }
        app->dwOrigins = AppOrigin::kInstaller;
        AddPackage(std::move(app));
    }
}

std::int32_t PackageQueue::Run() {
    const ResultCode rc = AtBoundary(
        [this] {
            Work();
            return kSuccess;
        },
        [] { return Fail(SmallCode::ObjectAllocation); });
    Ignore(rc, u"what was read stays");
    m_jobs.CloseAndDiscard();
    return 0;
}

void PackageQueue::Work() {
    RefPtr<CApp> app;
    while (m_goOn.IsContinue() != 0 && m_jobs.Take(app)) {
        if (app->pwszMsiPath.IsEmpty()) continue;
        const Outcome outcome = ReadPackage(*app);
        if (outcome == Outcome::End) return;
        if (outcome == Outcome::Keep) m_results.emplace_back(std::move(app));
    }
}

PackageQueue::Outcome PackageQueue::ReadPackage(CApp& app) {
    OwnedString code;
    {
        const PackageAttempt attempt(GetCrashGuard(static_cast<std::uint32_t>(CrashKind::Enum)), app.pwszMsiPath.Get());
        if (!attempt.IsAllowed()) return Outcome::Drop;
        const ProductInfoPtr info(CreateMSIProductInfo());
        if (info == nullptr) {
            Ignore(Fail(SmallCode::ObjectAllocation), u"the packages read so far stay");
            return Outcome::End;
        }
        FillFromPackage(*info, app, code);
    }
    if (app.ProductCode.IsNil()) app.ProductCode = ParseGuid(code, GuidForm::Braced);
    return app.ProductCode.IsNil() ? Outcome::Drop : Outcome::Keep;
}

}  // namespace roundup
