#include "msianalyzer/msianalyzecontroller.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "msianalyzer/configfileanalyzer.h"
#include "msianalyzer/feature.h"
#include "msianalyzer/includeconfigfileanalyzer.h"
#include "msianalyzer/installdetails.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/msihelpfile.h"
#include "msianalyzer/tables/featuretable.h"
#include "msianalyzer/tables/installexecutesequencetable.h"
#include "utility/fileinfo.h"

namespace roundup {

namespace {

struct NamedAction {
    std::u16string_view name;  // of the installer
    MsiAction action;
    bool wholeProduct;  // runs once, and not for each component
};

constexpr NamedAction kActions[] = {
    {u"RegisterProduct", MsiAction::RegisterProduct, true},
    {u"ProcessComponents", MsiAction::ProcessComponents, true},
    {u"InstallFiles", MsiAction::InstallFiles, false},
    {u"CreateShortcuts", MsiAction::CreateShortcuts, false},
    {u"InstallServices", MsiAction::InstallServices, false},
    {u"WriteRegistryValues", MsiAction::WriteRegistryValues, false},
    {u"SelfRegModules", MsiAction::SelfRegModules, false},
    {u"RegisterClassInfo", MsiAction::RegisterClassInfo, false},
    {u"RegisterTypeLibraries", MsiAction::RegisterTypeLibraries, false},
    {u"RegisterExtensionInfo", MsiAction::RegisterExtensionInfo, false},
    {u"RegisterProgIdInfo", MsiAction::RegisterProgIdInfo, true},
    {u"RegisterMIMEInfo", MsiAction::RegisterMimeInfo, false},
    {u"WriteIniValues", MsiAction::WriteIniValues, false},
    {u"PublishComponents", MsiAction::PublishComponents, true},
    {u"MsiPublishAssemblies", MsiAction::MsiPublishAssemblies, true},
};

}  // namespace

ResultCode CMSIAnalyzeController::Init(CMSIAnalyzer* analyzer) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_analyzer = analyzer;
    m_sequence.clear();
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::InstallExecuteSequence)) {
        m_sequence.push_back(&RowOf<CInstallExecuteSequenceTableRow>(entry));
    }
    std::stable_sort(m_sequence.begin(), m_sequence.end(),
                     [](const auto* a, const auto* b) { return a->sequence < b->sequence; });
    m_initialized = true;
    return kSuccess;
}

ResultCode CMSIAnalyzeController::Run() {
    if (!m_initialized) return Fail(SmallCode::ObjectMissing);
    if (const ResultCode rc = RunSequence(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = ExportHelpFiles(); Failed(rc)) return Pass(rc);
    ApplyIncludeFile();
    return kSuccess;
}

ResultCode CMSIAnalyzeController::RunSequence() {
    ResultCode last;
    for (const CInstallExecuteSequenceTableRow* row : m_sequence) {
        last = RunAction(*row);
        if (Failed(last)) Skip(last);
    }
    return last;
}

ResultCode CMSIAnalyzeController::RunAction(const CInstallExecuteSequenceTableRow& row) {
    if (m_analyzer->IsCustomAction(row.action)) return kSuccess;
    const NamedAction* const named = std::find_if(std::begin(kActions), std::end(kActions),
                                                  [&](const auto& entry) { return entry.name == row.action; });
    if (named == std::end(kActions)) return kSuccess;
    if (!named->wholeProduct) return RunFeatures(named->action);
    CInstallDetails details;
    return details.Execute(m_analyzer, named->action);
}

ResultCode CMSIAnalyzeController::RunFeatures(MsiAction action) {
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::Feature)) {
        CFeature feature(RowOf<CFeatureTableRow>(entry));
        if (const ResultCode rc = feature.Execute(m_analyzer, action); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CMSIAnalyzeController::ExportHelpFiles() {
    CMSIHelpFile help;
    if (const ResultCode rc = help.Init(m_analyzer); Failed(rc)) return Pass(rc);
    const ResultCode rc = help.Run();
    return Failed(rc) ? Pass(rc) : kSuccess;
}

void CMSIAnalyzeController::ApplyIncludeFile() {
    std::u16string path;
    FindConfigFile(m_analyzer->ProductCode(), path, true);
    if (!PathExists(path.c_str())) return;
    CIncludeConfigFileAnalyzer include(m_analyzer);
    Ignore(include.Load(path.c_str()), u"a broken rule file adds nothing");
}

}  // namespace roundup
