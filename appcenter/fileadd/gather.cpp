// The gather of an application: declared with it, defined here, since it needs what stands above it.
//
// A gather goes through a tree of applications, the parts before the whole. What the sources find goes to the root, so
// that the members of a suite share one list; an application of its own has its package, its programs and its store.
// The tree may be deep, so it is walked without recursion.
#include <unordered_set>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appanalyze/analyzeapp.h"
#include "appcenter/appconifgfile/appconfigstore.h"
#include "appcenter/appfile/removerepeatreg.h"
#include "msianalyzer/imsianalyzer.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"
#include "utility/log.h"

namespace roundup {

namespace {

struct ReleaseAnalyzer {
    void operator()(IMSIAnalyzer* analyzer) const noexcept { analyzer->Release(); }
};

class GatherTree {
  public:
    GatherTree(CApp& root, IRemoveRepeatReg* filter) : m_root(root), m_filter(filter) {}

    // The result is that of top alone.
    ResultCode Run(CApp& top) {
        if (top.IsGathered()) return kSuccess;
        ResultCode result;
        if (!Begin(top, result)) return result;
        std::vector<Level> open{{&top, 0}};
        for (;;) {
            CApp& app = *open.back().app;
            if (open.back().next < app.SubApps.size()) {
                IApp& sub = *app.SubApps[open.back().next++].Get();
                auto* part = dynamic_cast<CApp*>(&sub);
                if (part == nullptr) {
                    Ignore(sub.Gather(&m_root, m_filter), u"a part that fails does not fail the whole");
                } else if (IsNew(*part) && Begin(*part, result)) {
                    open.push_back({part, 0});
                }
                continue;
            }
            result = Finish(app);
            if (open.size() == 1) return result;
            open.pop_back();
        }
    }

  private:
    struct Level {
        CApp* app;
        std::size_t next;
    };

    // Nothing in the tree was gathered when it was entered: only a part that hangs in it twice can be by now.
    bool IsNew(CApp& part) { return m_met.insert(&part).second || !part.IsGathered(); }

    // False when there is nothing more to do for the application, and result tells how it went.
    bool Begin(CApp& app, ResultCode& result) {
        app.llGatheredSize = 0;
        if (EndsWithNoCase(app.pwszMsiPath, u".msp")) {
            const OwnedString& patch = app.pwszMsiPath;
            result = m_root.AddFile(patch.Text(), GetFileSize64(patch.Text()), FileType::kPackage);
            if (Failed(result)) result = Pass(result);
            return false;
        }
        TraceLine(u"Gather App \"%s\"...", app.pwszName);
        return true;
    }

    ResultCode Finish(CApp& app) {
        CAppConfigStore store;
        if (auto rc = store.Open(app.pwszKeyString, AddGathered, &m_root); Failed(rc)) return Pass(rc);
        if (EndsWithNoCase(app.pwszMsiPath, u".msi")) {
            if (auto rc = GatherPackage(app, store); Failed(rc)) Skip(rc);
            TraceLine(u"...Gather App \"%s\" from msi", app.pwszName);
        }
        if (auto rc = AnalyzeApp(app, store, m_root, m_filter); Failed(rc)) return Pass(rc);
        store.Close();
        AddOwnFiles(app, store);
        if (app.llEstimatedSize == 0) app.llEstimatedSize = app.llGatheredSize;
        TraceLine(u"...Gather App \"%s\" files(%ld)", app.pwszName,
                  static_cast<std::int32_t>(app.Gathered().Files.size()));
        return kSuccess;
    }

    ResultCode GatherPackage(CApp& app, CAppConfigStore& store) {
        TraceLine(u"Gather App  \"%s\" from msi...", app.pwszName.IsNull() ? u"null" : app.pwszName.Get());
        const OwnedString& package = app.pwszMsiPath;
        if (auto rc = app.AddFile(package.Text(), GetFileSize64(package.Text()), FileType::kPackage); Failed(rc)) {
            Skip(rc);
        }
        const std::unique_ptr<IMSIAnalyzer, ReleaseAnalyzer> analyzer(CreateMSIAnalyzer());
        if (!analyzer) return Fail(SmallCode::ObjectAllocation);
        if (auto rc =
                analyzer->Open(package.Text(), app.pwszInstallSource.Get(), CAppConfigStore::OnItem, &store, m_filter);
            Failed(rc)) {
            return Pass(rc);
        }
        const ResultCode rc = analyzer->Analyze();
        Ignore(analyzer->Close(), u"it never fails");
        return Failed(rc) ? Pass(rc) : kSuccess;
    }

    static void AddOwnFiles(CApp& app, CAppConfigStore& store) {
        const auto add = [&app](const char16_t* path, std::uint32_t type) {
            const ResultCode rc = app.AddFile(path, GetFileSize64(path), type);
            if (Failed(rc)) Skip(rc);
            return Succeeded(rc);
        };
        for (const OwnedString* program : {&app.pwszUnInstallProgram, &app.pwszIconProgram}) {
            if (!program->IsEmpty()) add(program->Text(), FileType::kOrdinary);
        }
        const bool index = add(store.IndexPath(), FileType::kIndex);
        const bool data = add(store.DataPath(), FileType::kConfig);
        if (index && data) store.Keep();
    }

    CApp& m_root;
    IRemoveRepeatReg* const m_filter;
    std::unordered_set<const CApp*> m_met;
};

}  // namespace

ResultCode CApp::Gather(IApp* root, IRemoveRepeatReg* filter) {
    return AtBoundary(
        [&]() -> ResultCode {
            if (root == nullptr) {
                const auto own = RefPtr<CRemoveRepeatReg>::Adopt(new CRemoveRepeatReg);
                return GatherTree(*this, own.Get()).Run(*this);
            }
            auto* const top = dynamic_cast<CApp*>(root);
            if (top == nullptr) return Fail(SmallCode::BadArgument);
            return GatherTree(*top, filter).Run(*this);
        },
        [] { return Fail(SmallCode::ObjectAllocation); });
}

}  // namespace roundup
