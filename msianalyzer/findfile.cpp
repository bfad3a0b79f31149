#include "msianalyzer/findfile.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/filesystem.h"
#include "platform/machine.h"
#include "utility/log.h"

namespace roundup {

namespace {

// Folders in folders: a path has at most 32,767 characters, two of them for each folder, and no tree of files that
// people use is anywhere near as deep as this.
constexpr std::size_t kMaxDepth = 1024;

// One folder of the walk, while it is open.
class OpenFolder {
  public:
    OpenFolder() = default;
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    ~OpenFolder() {
        if (m_open) CurrentMachine().Files().FindClose(m_find);
    }

    // 18 at the end of the folder, also when nothing is there.
    Win32Error First(const char16_t* pattern) {
        const Win32Error error = CurrentMachine().Files().FindFirst(pattern, m_find, m_data);
        m_open = error == kErrorSuccess;
        return error == kErrorFileNotFound || error == kErrorPathNotFound ? kErrorNoMoreFiles : error;
    }
    Win32Error Next() { return CurrentMachine().Files().FindNext(m_find, m_data); }
    const FindData& Data() const noexcept { return m_data; }

    std::size_t pathLength = 0;  // of the folder's own path
    bool started = false;

  private:
    FindHandle m_find = 0;
    bool m_open = false;
    FindData m_data;
};

struct FileWalk {
    FindFileCallback onFile;
    void* context;
    bool recursive;
    std::u16string path;
    std::vector<std::unique_ptr<OpenFolder>> folders{};
};

bool IsWalked(const FindData& entry) noexcept { return entry.name[0] != u'.'; }

// Moves the innermost folder to its next entry; the folder is left when there is none.
ResultCode NextEntry(FileWalk& walk, std::u16string_view mask, bool& found) {
    OpenFolder& folder = *walk.folders.back();
    walk.path.resize(folder.pathLength);
    Win32Error error = kErrorSuccess;
    if (folder.started) {
        error = folder.Next();
    } else {
        folder.started = true;
        walk.path.append(u"\\").append(walk.folders.size() == 1 ? mask : u"*.*");
        error = folder.First(walk.path.c_str());
        walk.path.resize(folder.pathLength);
    }
    found = error == kErrorSuccess;
    if (!found) walk.folders.pop_back();
    return found || error == kErrorNoMoreFiles ? kSuccess : Fail(SmallCode::InstallerFailure, error);
}

void EnterFolder(FileWalk& walk) {
    if (walk.folders.size() == kMaxDepth) {
        TraceLine(u"Folders are too deep: %s\n", walk.path.substr(0, 260));
        return;
    }
    walk.folders.push_back(std::make_unique<OpenFolder>());
    walk.folders.back()->pathLength = walk.path.size();
}

ResultCode TakeEntry(FileWalk& walk) {
    const FindData& entry = walk.folders.back()->Data();
    walk.path.append(u"\\").append(entry.name);
    if ((entry.attributes & kAttributeDirectory) == 0) {
        return walk.onFile(walk.context, {walk.path.c_str(), entry.attributes, entry.size});
    }
    const bool leadsElsewhere = (entry.attributes & kAttributeReparsePoint) != 0;
    if (!leadsElsewhere && walk.recursive && IsWalked(entry)) EnterFolder(walk);
    return kSuccess;
}

}  // namespace

ResultCode FindFiles(std::u16string_view folder, FindFileCallback onFile, void* context, bool recursive,
                     std::u16string_view mask) {
    if (folder.empty() || mask.empty()) return Fail(SmallCode::BadArgument);
    if (onFile == nullptr || context == nullptr) return Fail(SmallCode::BadArgument);
    if (folder.back() == u'\\') folder.remove_suffix(1);
    FileWalk walk{onFile, context, recursive, std::u16string(folder)};
    EnterFolder(walk);
    while (!walk.folders.empty()) {
        bool found = false;
        if (const ResultCode rc = NextEntry(walk, mask, found); Failed(rc)) return Pass(rc);
        if (!found) continue;
        if (const ResultCode rc = TakeEntry(walk); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

}  // namespace roundup
