#include "appcenter/appeunm/appcache.h"

#include <limits>
#include <string_view>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/cachedobject.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/bufarray.h"
#include "utility/fileinfo.h"
#include "utility/fixedtext.h"
#include "utility/log.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

using CachePath = FixedText<520>;

CachedKind KindOf(const FindData& entry) noexcept {
    const std::u16string_view name = entry.name;
    constexpr std::uint32_t kJunction = kAttributeDirectory | kAttributeReparsePoint;
    if (name == u"." || name == u".." || (entry.attributes & kJunction) == kJunction) return CachedKind::None;
    if (EndsWithNoCase(name, u"_E")) return CachedKind::Application;
    return EndsWithNoCase(name, u"_EX") ? CachedKind::Package : CachedKind::None;
}

// An open search of the cache folder.
class CacheSearch {
  public:
    explicit CacheSearch(const char16_t* pattern)
        : m_files(CurrentMachine().Files()), m_found(m_files.FindFirst(pattern, m_find, entry) == kErrorSuccess) {}
    CacheSearch(const CacheSearch&) = delete;
    CacheSearch& operator=(const CacheSearch&) = delete;
    ~CacheSearch() {
        if (m_found) m_files.FindClose(m_find);
    }
    bool HasEntry() const noexcept { return m_found; }
    bool Next() { return m_files.FindNext(m_find, entry) == kErrorSuccess; }

    FindData entry;

  private:
    IFileSystem& m_files;
    FindHandle m_find = kInvalidFile;
    const bool m_found;
};

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
    CacheSearch search(pattern.Text());
    if (!search.HasEntry()) return Fail(SmallCode::NoMoreItems);
    do {
        const CachedKind kind = KindOf(search.entry);
        if (kind == CachedKind::None) continue;
        if (auto rc = LoadOne(manager, folder, search.entry, kind); Failed(rc)) return PassQuiet(rc);
    } while (manager.IsContinue() != 0 && search.Next());
    return kSuccess;
}

}  // namespace

ResultCode LoadAppFromCache(CAppManager& manager) {
    auto rc = AtBoundary([&] { return LoadFolder(manager); }, [] { return Fail(SmallCode::BufferAllocation); });
    return Small(rc) == SmallCode::NoMoreItems ? kSuccess : rc;
}

}  // namespace roundup
