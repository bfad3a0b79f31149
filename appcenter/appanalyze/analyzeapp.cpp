#include "appcenter/appanalyze/analyzeapp.h"

#include <algorithm>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadaptermgr/appadaptermgr.h"
#include "appcenter/appanalyze/walks.h"
#include "appcenter/appconifgfile/appconfigstore.h"
#include "appcenter/appconifgfile/storewriters.h"
#include "appcenter/appreggather/appreggather.h"
#include "appcenter/appreggather/commentreggather.h"
#include "appcenter/appsoftdata/appsoftdata.h"
#include "platform/closedlibraries.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"

namespace roundup {

namespace {

// The cached package does not count: it lies there for every product of the installer.
bool HasFiles(const CApp& app) {
    return std::any_of(app.Gathered().Files.begin(), app.Gathered().Files.end(),
                       [](const std::unique_ptr<CWFYFile>& file) { return file->dwType != FileType::kPackage; });
}

// One analysis, its sources named in the order in which Run calls them.
class Analysis {
  public:
    Analysis(CApp& app, CAppConfigStore& store, CApp& root, IRemoveRepeatReg* filter)
        : m_app(app),
          m_store(store),
          m_root(root),
          m_filter(filter),
          m_sink{AddGathered, &root},
          // The root names the rule file of a suite member.
          m_rules({app.pwszKeyString, app.pwszInstallLoc, root.pwszTypeDes, app.pwszOriginalInstallLoc}) {}

    ResultCode Run() {
        AddRules();
        const bool deep = m_app.pwszMsiPath.IsEmpty() || !HasFiles(m_root);
        AddIncludedFiles();
        WalkRuleDirs(m_rules, m_sink, m_filter);
        CorrectLocation();
        WalkLocation(m_app.pwszInstallLoc, m_rules, m_sink, m_filter);
        WalkProgramFolder(m_app.pwszUnInstallProgram);
        WalkProgramFolder(m_app.pwszIconProgram);
        CAppRegGather gather(m_app);
        if (deep) WalkCommonFolders(gather);
        if (&m_app == &m_root && !HasFiles(m_root)) return Fail(SmallCode::GeneralFailure);
        gather.RunGather(deep ? RegGatherScan::kAll : RegGatherScan::kDataFolders);
        if (auto rc = WriteShortcutRecord(m_app.Gathered().Files, m_store); Failed(rc)) return Pass(rc);
        WalkRegistryPaths(gather, m_rules, m_sink, m_filter);
        AddComponentItems(m_app.pwszInstallLoc, m_rules);
        WriteRegistryRecord(m_rules, gather, m_store, m_filter);
        Note(AddRuleDirectories(m_rules, &m_root));
        WriteUninstallRecord(m_app.pwszKeyString, m_store);
        return kSuccess;
    }

  private:
    static void Note(ResultCode rc) {
        if (Failed(rc)) Skip(rc);
    }

    void AddRules() {
        Note(LoadAdapters());
        Note(ApplyAdapters(&m_app, &m_rules));
        Note(AddSoftDataRules(&m_app, &m_rules));
        // The folder into which a setup program unpacked itself.
        if (m_app.pwszInstallSource.View().find(u"Cache") != std::u16string_view::npos) {
            m_rules.AddIncludedDirectory(m_app.pwszInstallSource);
        }
        if (IHearthRuntime* runtime = CurrentMachine().ClosedLibraries().OpenHearthRuntime(); runtime != nullptr) {
            runtime->AddRuntimeRules(&m_app, &m_rules);
            runtime->Release();
        }
    }

    // They do not count among the paths: a walk that comes to one of them adds it once more.
    void AddIncludedFiles() {
        for (const OwnedString& file : m_rules.IncludedFiles) {
            if (PathExists(file.Text())) Note(m_app.AddIncludedFile(file));
        }
    }

    // Some registries name the folder of the publisher, in which the application has one of its name.
    void CorrectLocation() {
        OwnedString& location = m_app.pwszInstallLoc;
        if (location.IsEmpty() || m_app.pwszName.IsEmpty() || ContainsNoCase(location, m_app.pwszName)) return;
        if (location.View().back() == u'\\') location.Truncate(location.Length() - 1);
        OwnedString own;
        if (!AssignConcat3(own, location, u"\\", m_app.pwszName)) return;
        if (PathExists(own.Text())) location = std::move(own);
    }

    void WalkProgramFolder(const OwnedString& program) {
        if (program.IsEmpty() || m_root.Gathered().FilePaths.Contains(program)) return;
        const std::size_t slash = program.View().rfind(u'\\');
        if (slash == std::u16string_view::npos) return;
        WalkLocation(OwnedString(program.View().substr(0, slash)), m_rules, m_sink, m_filter);
    }

    void WalkCommonFolders(CAppRegGather& gather) {
        std::vector<OwnedString> native;
        std::vector<OwnedString> x86;
        gather.GetCommonFolders(native, x86);
        for (const std::vector<OwnedString>* folders : {&native, &x86}) {
            for (const OwnedString& folder : *folders) {
                if (!folder.IsEmpty()) WalkLocation(folder, m_rules, m_sink, m_filter);
            }
        }
    }

    CApp& m_app;
    CAppConfigStore& m_store;
    CApp& m_root;
    IRemoveRepeatReg* const m_filter;
    const GatherSink m_sink;
    CAppRuleSet m_rules;
};

}  // namespace

ResultCode AnalyzeApp(CApp& app, CAppConfigStore& store, CApp& root, IRemoveRepeatReg* filter) {
    return Analysis(app, store, root, filter).Run();
}

ResultCode AddGathered(void* context, const char16_t* path, std::uint64_t size, std::uint32_t type) {
    return static_cast<CApp*>(context)->AddFile(path, size, type);
}

}  // namespace roundup
