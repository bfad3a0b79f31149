// The sink that every source of a gather feeds.
#include <iterator>
#include <memory>
#include <new>

#include "appcenter/app/app.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/pathtext.h"
#include "utility/peimage.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

// Of a path with its terminator. A longer one cannot belong to an application.
constexpr std::uint32_t kPathLimit = 520;

using PathBuffer = char16_t[kPathLimit];

// False for a path that is too long. One that does not exist stays as it is.
bool LongPathOf(const char16_t* path, PathBuffer& buffer, std::u16string_view& longPath) {
    const std::uint32_t length = CurrentMachine().Files().GetLongPath(path, buffer, kPathLimit);
    longPath = length != 0 ? std::u16string_view(buffer, length < kPathLimit ? length : 0) : path;
    return length < kPathLimit && longPath.size() < kPathLimit;
}

// Null when memory is short.
std::unique_ptr<CWFYFile> MakeFile(const OwnedString& path, std::uint64_t size, std::uint32_t type) {
    PathBuffer buffer;
    const bool hasShort = GetShortPath(path.Text(), buffer, kPathLimit) != 0;
    std::unique_ptr<CWFYFile> file(new (std::nothrow) CWFYFile);
    if (!file || !file->pwszPath.Assign(path)) return nullptr;
    if (!file->pwszShortPath.Assign(hasShort ? std::u16string_view(buffer) : path.View())) return nullptr;
    file->llSize = static_cast<std::int64_t>(size);
    file->dwType = type;
    return file;
}

}  // namespace

void CApp::AppendFile(std::unique_ptr<CWFYFile> file) {
    llGatheredSize += file->llSize;
    MakeGathered().Files.push_back(std::move(file));
}

// The special folders of the system never belong to an application alone.
ResultCode CApp::AddDirectory(std::u16string_view path) {
    GatheredItems& gathered = MakeGathered();
    if (gathered.Directories.Contains(path)) return kSuccess;
    OwnedString directory;
    const bool ends = path.back() == u'\\' || path.back() == u'/' || path.size() >= kPathLimit - 1;
    const bool made = ends ? directory.Assign(path) : AssignConcat(directory, path, u"\\");
    if (!made) return Fail(SmallCode::ObjectAllocation);
    (IsSpecialFolder(directory) ? gathered.SystemDirectories : gathered.Directories).insert(std::move(directory));
    return kSuccess;
}

ResultCode CApp::AddFile(const char16_t* path, std::uint64_t size, std::uint32_t type) {
    if (path == nullptr || *path == u'\0') return Fail(SmallCode::BadArgument);
    PathBuffer buffer;
    std::u16string_view longPath;
    if (!LongPathOf(path, buffer, longPath)) return Fail(SmallCode::BadArgument);
    if (type == FileType::kDirectory) return AddDirectory(longPath);

    OwnedString counted(longPath);
    if (counted.IsNull()) return Fail(SmallCode::ObjectAllocation);
    GatheredItems& gathered = MakeGathered();
    CStringSet& paths = gathered.FilePaths;
    const std::size_t before = paths.size();
    const auto behind = gathered.lastCounted != paths.end() ? std::next(gathered.lastCounted) : gathered.lastCounted;
    gathered.lastCounted = paths.insert(behind, std::move(counted));
    if (paths.size() == before) return kSuccess;
    // Zero-terminated, also where the path stands in no buffer of ours.
    return AddGatheredFile(*gathered.lastCounted, size, type);
}

ResultCode CApp::AddIncludedFile(const OwnedString& path) {
    std::unique_ptr<CWFYFile> file = MakeFile(path, GetFileSize64(path.Text()), FileType::kOrdinary);
    if (!file) return Fail(SmallCode::ObjectAllocation);
    if (IsPe32Plus(path.Text())) file->dwFlags |= FileFlags::k64BitImage;
    AppendFile(std::move(file));
    return kSuccess;
}

ResultCode CApp::AddGatheredFile(const OwnedString& path, std::uint64_t size, std::uint32_t type) {
    std::unique_ptr<CWFYFile> file = MakeFile(path, size, type);
    if (!file) return Fail(SmallCode::ObjectAllocation);
    std::unique_ptr<CWFYFile> second;
    if (type == FileType::kOrdinary || type == FileType::kPackage) {
        const auto [is32, is64] = ImageBitsOf(path.Text());
        if (is64) {
            file->dwFlags |= FileFlags::k64BitImage;
            qwFlags = (qwFlags | AppFlags::k64Bit) & ~AppFlags::k32BitImages;
            // What lies in a system folder passes for both, and counts for both.
            if (is32) second = MakeFile(path, size, type);
        } else if (is32) {
            file->dwFlags |= FileFlags::k32BitImage;
            if ((qwFlags & AppFlags::k64Bit) == 0) qwFlags |= AppFlags::k32BitImages;
        }
    }
    AppendFile(std::move(file));
    if (second) AppendFile(std::move(second));
    return kSuccess;
}

}  // namespace roundup
