#include "appcenter/appanalyze/estimateapp.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/app/icontinue.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appanalyze/folderwalk.h"
#include "utility/fileinfo.h"
#include "utility/log.h"
#include "utility/peimage.h"

namespace roundup {

namespace {

constexpr std::u16string_view kSuiteNames[] = {u"Microsoft Office", u"Microsoft 365", u"Microsoft Visio",
                                               u"Microsoft Project"};

bool IsSuite(const CApp& app) {
    return std::any_of(std::begin(kSuiteNames), std::end(kSuiteNames),
                       [&](std::u16string_view name) { return ContainsNoCase(app.pwszName, name); });
}

std::u16string_view FamilyOf(const CApp& app) {
    if (ContainsNoCase(app.pwszName, u"PROJECT")) return u"PROJECT";
    return ContainsNoCase(app.pwszName, u"VISIO") ? u"VISIO" : u"OFFICE";
}

// The family is that of the application's own name, the version that of its first part which has one.
void TakeSuiteType(CApp& app, const IContinue& progress) {
    for (const RefPtr<IApp>& sub : app.SubApps) {
        if (progress.IsContinue() == 0) return;
        const auto* part = dynamic_cast<const CApp*>(sub.Get());
        if (part == nullptr) continue;
        if (app.pwszType.IsEmpty() && !part->pwszType.IsEmpty()) AssignString(app.pwszType, FamilyOf(app));
        const std::size_t version = part->pwszTypeDes.View().rfind(u'_');
        if (app.pwszTypeDes.IsEmpty() && version != std::u16string_view::npos) {
            AssignConcat(app.pwszTypeDes, FamilyOf(app), part->pwszTypeDes.View().substr(version));
        }
        if (!app.pwszType.IsEmpty() || !app.pwszTypeDes.IsEmpty()) return;
    }
}

class Estimate {
  public:
    Estimate(CStringSet& seen, const IContinue& progress) : m_seen(seen), m_progress(progress) {}

    // The parts of an application before itself, without recursion: a forest may be deep.
    void Run(CApp& app) {
        app.ResolveRealLocation();
        std::vector<Level> open;
        if (Begin(app)) open.push_back({&app, 0});
        while (!open.empty()) {
            Level& level = open.back();
            CApp& parent = *level.app;
            if (level.next < parent.SubApps.size() && m_progress.IsContinue() != 0) {
                auto* part = dynamic_cast<CApp*>(parent.SubApps[level.next++].Get());
                if (part == nullptr) continue;
                if (Begin(*part)) {
                    open.push_back({part, 0});
                } else {
                    Add(parent, *part);
                }
                continue;
            }
            Measure(parent);
            open.pop_back();
            if (!open.empty()) Add(*open.back().app, parent);
        }
    }

  private:
    struct Level {
        CApp* app;
        std::size_t next;
    };

    // False when the registry's figure stands.
    bool Begin(CApp& app) {
        if (IsSuite(app) && !app.SubApps.empty()) TakeSuiteType(app, m_progress);
        return app.llEstimatedSize <= 0;
    }

    static void Add(CApp& app, const CApp& part) {
        app.llEstimatedSize += part.llEstimatedSize;
        app.qwFlags |= part.qwFlags & AppFlags::k64Bit;
    }

    void Measure(CApp& app) {
        if (app.llEstimatedSize > 0 || app.pwszInstallLoc.IsEmpty()) return;
        FolderWalk walk;
        QueueFolders(app, walk);
        bool is64 = false;
        walk.Run(
            FolderWalk::kLongestWalked,
            [&](const char16_t* path, std::uint64_t size) {
                app.llEstimatedSize += static_cast<std::int64_t>(size);
                if (!is64) is64 = IsPe32Plus(path);
                return m_progress.IsContinue() != 0;
            },
            [&](const char16_t* path) { return m_progress.IsContinue() != 0 && IsNew(path); });
        if (is64) app.qwFlags |= AppFlags::k64Bit;
    }

    void QueueFolders(const CApp& app, FolderWalk& walk) {
        const CAppRuleSet rules({app.pwszKeyString, app.pwszInstallLoc, app.pwszTypeDes, app.pwszOriginalInstallLoc});
        if (!IsSystemPath(app.pwszInstallLoc)) {
            TraceLine(u"file location from register table1: %s", app.pwszInstallLoc);
            IsNew(app.pwszInstallLoc);
            walk.Enter(app.pwszInstallLoc);
            walk.Queue(app.pwszInstallLoc);
        }
        for (const OwnedString& folder : rules.IncludedDirectories) {
            if (folder.IsEmpty()) return;
            if (PathExists(folder.Text()) && !walk.IsRelatedToQueued(folder) && IsNew(folder)) {
                TraceLine(u"file location from config file1: %s", folder);
                if (walk.Enter(folder)) walk.Queue(folder);
            }
            if (m_progress.IsContinue() == 0) return;
        }
    }

    bool IsNew(TextOrNull path) { return m_seen.insert(OwnedString(path.View())).second; }

    CStringSet& m_seen;
    const IContinue& m_progress;
};

}  // namespace

void EstimateApp(IApp& app, CStringSet& seen, const IContinue& progress) {
    if (auto* entry = dynamic_cast<CApp*>(&app)) Estimate(seen, progress).Run(*entry);
}

}  // namespace roundup
