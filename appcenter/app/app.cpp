#include "appcenter/app/app.h"

#include <cstring>
#include <iterator>

#include "appcenter/app/forest.h"
#include "utility/log.h"
#include "utility/stringcontainers.h"

namespace roundup {

namespace {

const GatheredItems kNothingGathered;

void CopyText(char16_t (&target)[kRecordTextSize], const OwnedString& source) noexcept {
    if (!source.IsEmpty()) CopyBounded(target, source, kRecordTextSize);
}

void AddDrives(const CStringSet& directories, CStringSet& drives) {
    for (const OwnedString& directory : directories) {
        const std::u16string_view path = directory;
        if (path.size() >= 2 && path[1] == u':') drives.Add(path.substr(0, 2));
    }
}

}  // namespace

// A deep forest must not end in as many nested destructors. So an object that dies takes those of its sub-applications
// that nobody else holds out of their places and chains them up, with what lies below each in turn, before it lets go
// of any: each then dies with an empty list. The chain runs through the objects, since nothing may be allocated here.
CApp::~CApp() {
    CApp* chain = nullptr;
    ChainDying(chain);
    while (chain != nullptr) {
        CApp* const dying = chain;
        chain = dying->m_nextDying;
        dying->ChainDying(chain);
        dying->Release();
    }
}

void CApp::ChainDying(CApp*& chain) {
    for (RefPtr<IApp>& sub : SubApps) {
        auto* const app = dynamic_cast<CApp*>(sub.Get());
        if (app == nullptr || app->SubApps.empty()) continue;
        const bool held = app->AddRef() > 2;
        app->Release();
        if (held) continue;
        sub.Detach();
        app->m_nextDying = chain;
        chain = app;
    }
    SubApps.clear();
}

void CApp::FillAppInfo(AppRecordEx& record) const {
    std::memset(static_cast<void*>(&record), 0, sizeof record);
    record.code = ProductCode;
    CopyText(record.wzName, pwszName);
    CopyText(record.wzKeyString, pwszKeyString);
    CopyText(record.wzType, pwszType);
    CopyText(record.wzTypeDes, pwszTypeDes);
    record.qwFlags = qwFlags;
    record.dwTag = dwTag;
    CopyText(record.wzInstallLoc, pwszInstallLoc);
    CopyText(record.wzRealInstallLoc, pwszRealInstallLoc);
    CopyText(record.wzVersion, pwszVersion);
    CopyText(record.wzOriginalInstallLoc, pwszOriginalInstallLoc);
}

const GatheredItems& CApp::Gathered() const noexcept { return m_gathered != nullptr ? *m_gathered : kNothingGathered; }

GatheredItems& CApp::MakeGathered() {
    if (m_gathered == nullptr) m_gathered = std::make_unique<GatheredItems>();
    return *m_gathered;
}

const char16_t* CApp::GetDirectory(std::uint32_t index) const {
    const CStringSet& directories = Gathered().Directories;
    if (index >= directories.size()) return nullptr;
    return std::next(directories.begin(), static_cast<std::ptrdiff_t>(index))->Get();
}

bool CApp::IsGathered() const {
    return AnyInForest(
        *this, [](const CApp& app) { return !app.Gathered().Files.empty(); },
        [](const IApp& app) { return app.IsGathered(); });
}

void CApp::UnGather() {
    AnyInForest(
        *this,
        [](CApp& app) {
            TraceLine(u"UnGather App \"%s\"", app.pwszName);
            app.m_gathered.reset();
            return false;
        },
        [](IApp& app) {
            app.UnGather();
            return false;
        });
}

void CApp::GetDrives(CStringSet& drives) const {
    AddDrives(Gathered().Directories, drives);
    AddDrives(Gathered().SystemDirectories, drives);
}

void CApp::GetSubApps(std::vector<IApp*>& subApps) const {
    for (const RefPtr<IApp>& sub : SubApps) subApps.push_back(sub.Get());
}

void CApp::GetFilesAndDirectories(std::vector<IWFYFile*>& files, CStringVec& directories) {
    files.clear();
    if (m_gathered == nullptr) return;
    for (const std::unique_ptr<CWFYFile>& file : m_gathered->Files) {
        if (!m_gathered->KeepStoreFile(*file)) files.push_back(file.get());
    }
    for (const OwnedString& directory : m_gathered->Directories) directories.Add(directory);
}

bool GatheredItems::KeepStoreFile(CWFYFile& file) noexcept {
    switch (file.dwType) {
        case FileType::kConfig:
            pConfigFile = &file;
            return true;
        case FileType::kIndex:
            pIndexFile = &file;
            return true;
        default:
            return false;
    }
}

}  // namespace roundup
