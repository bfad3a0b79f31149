#include "appcenter/sqlserverstruct/sqlservergather.h"

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/sqlserverstruct/softdatalock.h"
#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

struct KnownVersion {
    std::u16string_view name;
    std::uint32_t number;
};

// The first that the key string contains counts.
constexpr KnownVersion kVersions[] = {{u"2008 R2", 20082}, {u"2019", 2019}, {u"2017", 2017},
                                      {u"2016", 2016},     {u"2014", 2014}, {u"2012", 2012}};

// Refusals are of rules that are there already.
void AddInstanceRules(const SqlServerInfo& info, const SqlInstanceInfo& instance, CAppRuleSet& rules) {
    for (const std::u16string& key : info.ServiceKeys) (void)rules.IncludedRegs.Add(RuleRoot::kLocalMachine, key);
    (void)rules.AddIncludedDirectory(instance.RootFolder);
    for (const std::u16string& folder : info.InfFolders) (void)rules.AddIncludedDirectory(folder);
    for (const std::u16string& file : instance.SystemFiles) (void)rules.IncludedFiles.Add(file);
    for (const std::u16string* folder : {&instance.DataDir, &instance.SQLBinRoot, &instance.SQLPath,
                                         &instance.ErrorDumpDir, &instance.ErrorLogFile, &instance.WorkingDirectory}) {
        (void)rules.AddIncludedDirectory(*folder);
    }
    if (!info.SrFolders.empty()) (void)rules.AddIncludedDirectory(info.SrFolders.begin()->second);
}

// The drive of a path as it is compared: its first two characters, ignoring case.
bool IsOnSameDrive(std::u16string_view a, std::u16string_view b) noexcept {
    return EqualsNoCase(a.substr(0, 2), b.substr(0, 2));
}

}  // namespace

std::uint32_t CSqlServerGather::GetSqlServerVersion(const IApp& app) {
    AppRecordEx record = {};
    app.FillAppInfo(record);
    const std::u16string_view key = record.wzKeyString;
    for (const KnownVersion& version : kVersions) {
        if (key.find(version.name) != std::u16string_view::npos) return version.number;
    }
    return 0;
}

ResultCode CSqlServerGather::AddSqlServerRules(const IApp& app, CAppRuleSet* ruleSet) {
    if (ruleSet == nullptr) return Fail(SmallCode::GeneralFailure);
    const std::uint32_t version = GetSqlServerVersion(app);
    if (version == 0) return Fail(SmallCode::GeneralFailure);

    SqlServerInfo info;
    if (auto rc = BuildSqlServerInfo(info); Failed(rc)) return Pass(rc);
    for (const SqlInstanceInfo& instance : info.Instances) AddInstanceRules(info, instance, *ruleSet);

    std::u16string path;
    if (const auto rc = WriteSqlServerCache(info, version, path); Failed(rc)) {
        Ignore(rc, u"a cache that cannot be written is no part of the application");
    } else {
        (void)ruleSet->IncludedFiles.Add(path);
    }
    return kSuccess;
}

void CSqlServerGather::CorrectSqlServerLocation(CApp* app) {
    const LockGuard guard(g_SoftDataLock);
    if (app == nullptr) {
        Ignore(Fail(SmallCode::GeneralFailure), u"nothing to correct");
        return;
    }
    if ((app->GetFlags() & AppFlags::kNotTopLevel) != 0) return;
    const bool bothKnown = !app->pwszOriginalInstallLoc.IsEmpty() && !app->pwszInstallLoc.IsEmpty();
    if (bothKnown && !IsOnSameDrive(app->pwszOriginalInstallLoc, app->pwszInstallLoc)) return;
    if (!ContainsNoCase(app->pwszKeyString, u"Microsoft SQL Server")) return;
    if (GetSqlServerVersion(*app) == 0) return;
    SqlServerInfo info;
    if (const auto rc = BuildSqlServerInfo(info); Failed(rc)) {
        Ignore(rc, u"without instances the location stays");
        return;
    }
    for (const SqlInstanceInfo& instance : info.Instances) {
        if (instance.RootFolder.empty()) continue;
        if (!app->pwszInstallLoc.IsEmpty() && IsOnSameDrive(instance.RootFolder, app->pwszInstallLoc)) continue;
        (void)AssignString(app->pwszOriginalInstallLoc, instance.RootFolder);
        return;
    }
}

ResultCode AddSqlServerRules(const CApp& app, CAppRuleSet& ruleSet) {
    return CSqlServerGather::AddSqlServerRules(app, &ruleSet);
}

}  // namespace roundup
