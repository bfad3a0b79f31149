#include "appcenter/appeunm/appcache.h"

#include <limits>
#include <string_view>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/cachedobject.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/bufarray.h"
#include "utility/fileinfo.h"
#include "utility/filesearch.h"
#include "utility/fixedtext.h"
#include "utility/log.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

using CachePath = FixedText<520>;

CachedKind KindOf(const FileSearch& search) noexcept {
    if (search.IsReparseFolder()) return CachedKind::None;
    if (EndsWithNoCase(search.Name(), u"_E")) return CachedKind::Application;
    return EndsWithNoCase(search.Name(), u"_EX") ? CachedKind::Package : CachedKind::None;
}

// Reads as much as buffer takes; size tells how much that was, which is less for a file that has shrunk meanwhile.
ResultCode ReadFile(const CachePath& path, CBufArray& buffer, std::uint32_t& size) {
    IFileSystem& files = CurrentMachine().Files();
    FileHandle file = kInvalidFile;
    if (files.Open(path.Text(), kGenericRead, kShareRead | kShareWrite, kOpenExisting, file) != kErrorSuccess) {
        return Fail(SmallCode::GeneralFailure);
    }
    if (files.Read(file, buffer.GetData(), buffer.GetSize(), size) != kErrorSuccess) size = 0;
    files.Close(file);
    return kSuccess;
}

// One cache file. A file that is passed over is success; a failure ends the read of the cache.
ResultCode LoadOne(CAppManager& manager, std::u16string_view folder, const FindData& entry, CachedKind kind) {
    CachePath path;
    FormatText(path, u"%s\\%s", folder, entry.name);
    CBufArray buffer;
    const std::uint64_t size = GetFileSize64(path.Text());
    if (size == 0 || size > std::numeric_limits<std::uint32_t>::max() ||
        !buffer.Alloc(static_cast<std::uint32_t>(size))) {
        SkipIf(size);
        return kSuccess;
    }
    std::uint32_t read = 0;
    if (auto rc = ReadFile(path, buffer, read); Failed(rc)) return PassQuiet(rc);

    RefPtr<IApp> app = NewCachedObject(kind);
    if (!app) return Fail(SmallCode::BufferAllocation);
    std::uint32_t count = 0;
    if (Failed(app->ReSerialize(reinterpret_cast<const std::byte*>(buffer.GetData()), read, count))) {
        TraceLine(u"[TRC] LoadAppFromCache ReSerialize count != GetSize, name=%s", entry.name);
        return kSuccess;
    }
    DisownFiles(*app);
    (kind == CachedKind::Package ? manager.Packages() : manager.Applications()).push_back(std::move(app));
    return kSuccess;
}

ResultCode LoadFolder(CAppManager& manager) {
    FixedText<260> folder;
    if (!GetCacheFolder(folder)) return Fail(SmallCode::GeneralFailure);
    if (!PathExists(folder.Text())) return Fail(SmallCode::GeneralFailure);
    CachePath pattern;
    FormatText(pattern, u"%s\\*", folder);
    FileSearch search(pattern.Text());
    if (search.Error() != kErrorSuccess) return Fail(SmallCode::NoMoreItems);
    while (search.Next()) {
        const CachedKind kind = KindOf(search);
        if (kind == CachedKind::None) continue;
        if (auto rc = LoadOne(manager, folder, search.Entry(), kind); Failed(rc)) return PassQuiet(rc);
        if (manager.IsContinue() == 0) break;
    }
    return kSuccess;
}

}  // namespace

ResultCode LoadAppFromCache(CAppManager& manager) {
    auto rc = AtBoundary([&] { return LoadFolder(manager); }, [] { return Fail(SmallCode::BufferAllocation); });
    return Small(rc) == SmallCode::NoMoreItems ? kSuccess : rc;
}

}  // namespace roundup
