#include "appcenter/appadapterparse/appadapterparse.h"

#include <algorithm>
#include <new>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadapterparse/familylocation.h"
#include "appcenter/appadapterparse/placeholders.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"
#include "utility/log.h"

namespace roundup {
namespace {

// Stands in paths for whatever version there is: an adapter whose placeholder it is has its paths taken as they are.
constexpr std::u16string_view kFixedPlaceholder = u"XXXX";
// The version words of the family, tried in this order for a member that the adapter does not list.
constexpr std::u16string_view kFamilyVersions[] = {u"CS4", u"CS5", u"CS6", u"CC 2015", u"CC 2017", u"CC 2018"};

void AddAll(const CStringSet& from, RuleTexts& to) {
    for (const OwnedString& text : from) to.Add(text);
}

}  // namespace

bool CAppAdapterParse::IsMatch(IApp* app) const {
    if (app == nullptr || app->IsAppx() != 0) return false;
    if (m_name.IsEmpty()) {
        Ignore(Fail(SmallCode::BadArgument), u"an adapter without a name has no applications");
        return false;
    }
    const auto& record = static_cast<const CApp&>(*app);
    return ContainsNoCase(record.pwszName, m_name) || ContainsNoCase(record.pwszInstallLoc, m_name) ||
           ContainsNoCase(record.pwszKeyString, m_name);
}

ResultCode CAppAdapterParse::ApplyTo(IApp* app, CAppRuleSet* ruleSet) {
    if (app == nullptr || ruleSet == nullptr || m_name.IsEmpty()) return Fail(SmallCode::BadArgument);
    if (app->IsAppx() != 0 || !IsMatch(app)) return kSuccess;
    return AtBoundary(
        [&] {
            auto& record = static_cast<CApp&>(*app);
            const LockGuard guard(m_lock);
            if (auto rc = EnsureParsed(record.pwszInstallLoc); Failed(rc)) return Pass(rc);
            const FsRedirectGuard native;
            return ApplyParsed(record, *ruleSet);
        },
        [] { return Fail(SmallCode::GeneralFailure); });
}

ResultCode CAppAdapterParse::EnsureParsed(std::u16string_view location) {
    if (m_config == nullptr) m_config.reset(new (std::nothrow) CAppAdapterConfig);
    if (m_config == nullptr) return Fail(SmallCode::GeneralFailure);
    if (m_config->bParsed) return kSuccess;
    // A broken file would be read again for each of the family's applications.
    const std::uint32_t generation = ProcessWide<RuleFileStore>().Generation();
    if (m_triedIn == generation) return m_tried;
    const std::u16string path = ConfigFolder() + u"\\" + std::u16string(m_name.View()) + u".INCEX";
    m_tried = m_config->Parse(path.c_str(), location);
    m_triedIn = generation;
    return m_tried;
}

ResultCode CAppAdapterParse::ApplyParsed(CApp& app, CAppRuleSet& rules) {
    const CAppAdapterConfig& config = *m_config;
    CStringVec deleted;
    if (auto rc = ExpandPaths(m_name, config.ComponentDeleteFiles, deleted); Failed(rc)) return Pass(rc);
    for (const OwnedString& path : deleted) rules.ExcludedFiles.Add(path);
    if ((app.qwFlags & AppFlags::kNotTopLevel) != 0) return kSuccess;

    CStringVec directories;
    if (auto rc = CollectDirs(app, directories); Failed(rc)) return Pass(rc);
    CStringVec files;
    if (auto rc = ExpandPaths(kFixedPlaceholder, config.ComponentFiles, files); Failed(rc)) return Pass(rc);

    for (const OwnedString& path : files) rules.IncludedFiles.Add(path);
    for (const OwnedString& path : directories) rules.AddIncludedDirectory(path);
    for (const RuleRegItem& item : config.ComponentRegs) rules.IncludedRegs.Add(item.root, item.path);
    AddAll(config.HideAppNames, rules.HideNames);
    AddAll(config.HideAppKeys, rules.HideKeys);
    AddAll(config.SubAppNames, rules.SubAppNames);
    AddAll(config.SubAppKeys, rules.SubAppKeys);
    rules.bAppendProc = config.bAppendProc;
    AddAll(config.Actions, rules.Actions);
    return kSuccess;
}

ResultCode CAppAdapterParse::CollectDirs(CApp& app, CStringVec& directories) const {
    return IsFamilyMember(app) ? CollectFamily(app, directories) : CollectPlain(app, directories);
}

ResultCode CAppAdapterParse::CollectPlain(const CApp& app, CStringVec& directories) const {
    const CAppAdapterConfig& config = *m_config;
    const auto program = std::ranges::find_if(config.Programs, [&](const AdapterProgram& candidate) {
        return ContainsNoCase(app.pwszName, candidate.pwszName);
    });
    if (program == config.Programs.end()) {
        TraceLine(u"[TRC] GetProgramByName failed : %s", app.pwszName);
        return Fail(SmallCode::GeneralFailure);
    }
    for (const CStringSet* paths : {&config.ComponentDirs, &config.ComponentDirsEx, &program->Dirs}) {
        if (auto rc = ExpandPaths(kFixedPlaceholder, *paths, directories); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CAppAdapterParse::CollectFamily(CApp& app, CStringVec& directories) const {
    FixFamilyLocation(app);
    const CAppAdapterConfig& config = *m_config;
    for (const AdapterProgram& program : config.Programs) {
        const OwnedString* const version = program.Versions.Find(app.pwszKeyString);
        if (version == nullptr) continue;
        if (version->IsEmpty()) return Fail(SmallCode::GeneralFailure);
        if (auto rc = ExpandPaths(*version, program.Dirs, directories); Failed(rc)) return Pass(rc);
        return ExpandPaths(*version, config.ComponentDirs, directories);
    }
    for (const std::u16string_view version : kFamilyVersions) {
        if (auto rc = ExpandPaths(version, config.ComponentDirs, directories); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CAppAdapterParse::ExpandPaths(std::u16string_view word, const CStringSet& paths,
                                         CStringVec& expanded) const {
    return ExpandPlaceholderPaths(m_config->pwszVersion, word, paths, expanded);
}

}  // namespace roundup
