#include "platform/recorded/pathtrail.h"

#include <algorithm>

#include "platform/recorded/filetree.h"

namespace roundup {

namespace {

// One for each thread, constant until used: no guard is asked whether it was made.
constinit thread_local PathTrail t_trail;

// "X:\" and something behind it.
bool HasPlainRoot(const char16_t* path) noexcept {
    return path[0] != u'\0' && path[1] == u':' && path[2] == u'\\' && path[3] != u'\0';
}

}  // namespace

std::size_t PathTrail::Common(const char16_t* path, std::size_t& end) const noexcept {
    std::size_t same = 0;
    for (const std::size_t length = Length(); same < length && path[same] == text[same];) ++same;
    std::size_t common = count;
    const auto ends = [&](std::size_t at) { return at <= same && (path[at] == u'\\' || path[at] == u'\0'); };
    while (common != 0 && !ends(parts[common - 1].end)) --common;
    end = common != 0 ? parts[common - 1].end : 0;
    return common;
}

void PathTrail::Push(std::u16string_view path, FileEntry& entry) noexcept {
    const std::size_t from = Length();
    std::copy(path.begin() + static_cast<std::ptrdiff_t>(from), path.end(), text + from);
    parts[count++] = {path.size(), &entry};
}

std::u16string_view PlainPart(const char16_t* path, std::size_t start) noexcept {
    std::size_t end = start;
    for (; path[end] != u'\0' && path[end] != u'\\'; ++end) {
        if (IsForbiddenInName(path[end])) return {};
    }
    if (end == start || path[end - 1] == u'.' || path[end - 1] == u' ') return {};
    return {path + start, end - start};
}

// Only what leads through folders of the tree is remembered: links, mount points and mapped folders have rules of
// their own. Every change of names in any tree makes what was remembered void; it is told to readers after it was
// made, so a trail that was found meanwhile is of the version before.
const PathTrail* FileTree::FindPlain(const char16_t* path) {
    PathTrail& trail = t_trail;
    const std::uint64_t version = FolderNode::NamesVersion();
    if (trail.tree != this || trail.version != version) {
        trail.tree = this;
        trail.version = version;
        trail.count = 0;
    }
    std::size_t end = 0;
    trail.asked = trail.Common(path, end);
    if (trail.asked != 0 && path[end] == u'\0') return MappedAt(*trail.Last().entry) != nullptr ? nullptr : &trail;
    FileEntry* entry = nullptr;
    if (trail.asked != 0) {
        entry = trail.parts[trail.asked - 1].entry;
    } else {
        if (!HasPlainRoot(path)) return nullptr;
        entry = DriveOf(path[0]);
        end = 2;
    }
    for (trail.count = trail.asked; entry != nullptr && path[end] == u'\\'; trail.asked = trail.count) {
        const std::u16string_view part = PlainPart(path, end + 1);
        end += 1 + part.size();
        const bool fits = end <= PathTrail::kLongest && trail.count < PathTrail::kMostParts;
        if (part.empty() || !fits || !IsPlainFolder(*entry)) return nullptr;
        Win32Error error = kErrorSuccess;
        entry = FolderOf(*entry).Find(part, error);
        if (entry != nullptr) trail.Push({path, end}, *entry);
    }
    return entry != nullptr && MappedAt(*entry) == nullptr ? &trail : nullptr;
}

bool FileTree::IsPlainFolder(const FileEntry& entry) {
    if (entry.kind != SourceKind::Folder || (entry.extras && !entry.extras->reparseTarget.empty())) return false;
    return MappedAt(entry) == nullptr;
}

}  // namespace roundup
