#include "appcenter/appanalyze/walks.h"

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appanalyze/folderwalk.h"
#include "appcenter/appreggather/appreggather.h"
#include "utility/fileinfo.h"
#include "utility/iremoverepeatreg.h"
#include "utility/log.h"

namespace roundup {

namespace {

constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

bool IsSeen(IRemoveRepeatReg* filter, const char16_t* path) {
    return filter != nullptr && filter->IsDirectorySeen(path) != 0;
}

void Report(const GatherSink& sink, const char16_t* path, std::uint64_t size, std::uint32_t type) {
    if (auto rc = sink.add(sink.context, path, size, type); Failed(rc)) Skip(rc);
}

// excluded says which of the rules a file is held against.
void Walk(FolderWalk& walk, std::size_t longest, const CAppRuleSet& ruleSet, const GatherSink& sink,
          bool (CAppRuleSet::*excluded)(TextOrNull) const) {
    const FsRedirectGuard native;
    walk.Run(
        longest,
        [&](const char16_t* path, std::uint64_t size) {
            if (!(ruleSet.*excluded)(path)) Report(sink, path, size, ItemType::kFile);
            return true;
        },
        [&](const char16_t* path) { return !ruleSet.IsDirExcluded(path); });
}

}  // namespace

void WalkRuleDirs(const CAppRuleSet& ruleSet, const GatherSink& sink, IRemoveRepeatReg* filter) {
    if (sink.add == nullptr) return;
    FolderWalk walk;
    for (const OwnedString& folder : ruleSet.IncludedDirectories) {
        if (folder.IsEmpty()) break;
        if (!PathExists(folder.Text()) || ruleSet.IsDirExcluded(folder) || walk.IsRelatedToQueued(folder)) continue;
        if (IsSeen(filter, folder.Text()) || !walk.Enter(folder)) continue;
        TraceLine(u"file location from config file2: %s", folder);
        walk.Queue(folder);
        Report(sink, folder.Text(), 0, ItemType::kFolder);
    }
    Walk(walk, kNoLimit, ruleSet, sink, &CAppRuleSet::IsDirExcluded);
}

void WalkLocation(const OwnedString& path, const CAppRuleSet& ruleSet, const GatherSink& sink,
                  IRemoveRepeatReg* filter) {
    if (sink.add == nullptr || IsSeen(filter, path.Text())) return;
    if (IsSystemPath(path) || !PathExists(path.Text()) || ruleSet.IsDirExcluded(path)) return;
    FolderWalk walk;
    walk.Enter(path);
    walk.Queue(path);
    TraceLine(u"file location from register table2: %s", path);
    Report(sink, path.Text(), 0, ItemType::kFolder);
    Walk(walk, kNoLimit, ruleSet, sink, &CAppRuleSet::IsFileExcluded);
}

void WalkRegistryPaths(const CAppRegGather& gather, const CAppRuleSet& ruleSet, const GatherSink& sink,
                       IRemoveRepeatReg* filter) {
    if (sink.add == nullptr) return;
    FolderWalk walk;
    for (std::size_t i = 0;; ++i) {
        const char16_t* path = gather.GetPath(i);
        if (path == nullptr || *path == u'\0') break;
        if (!PathExists(path) || ruleSet.IsDirExcluded(path) || walk.IsRelatedToQueued(path)) continue;
        if (!walk.Enter(path) || IsSeen(filter, path)) continue;
        walk.Queue(path);
        TraceLine(u"file location from app register3: %s", path);
        Report(sink, path, 0, ItemType::kFolder);
    }
    Walk(walk, FolderWalk::kLongestWalked, ruleSet, sink, &CAppRuleSet::IsFileExcluded);
}

ResultCode AddRuleDirectories(const CAppRuleSet& ruleSet, CApp* root) {
    if (root == nullptr) return Fail(SmallCode::GeneralFailure);
    for (const OwnedString& folder : ruleSet.IncludedDirectories) {
        if (folder.IsEmpty()) break;
        if (!PathExists(folder.Text())) continue;
        std::u16string path(folder.View());
        if (path.back() != u'\\') path += u'\\';
        root->MakeGathered().Directories.Add(path);
    }
    for (const OwnedString& file : ruleSet.IncludedFiles) {
        if (file.IsEmpty()) break;
        if (!PathExists(file.Text())) continue;
        root->MakeGathered().Directories.Add(file.View().substr(0, file.View().rfind(u'\\') + 1));
    }
    return kSuccess;
}

}  // namespace roundup
