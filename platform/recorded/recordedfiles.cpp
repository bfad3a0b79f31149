#include "platform/recorded/recordedfiles.h"

#include <algorithm>
#include <new>

#include "platform/recorded/lastfailure.h"
#include "utility/ownedstring.h"

namespace roundup {

namespace {

// Error numbers of these operations are also the thread's last error, as on Windows.
Win32Error Note(Win32Error error) noexcept {
    if (error != kErrorSuccess) SetLastFailure(error);
    return error;
}

void Fill(FindData& data, std::u16string_view name, std::uint32_t attributes, std::uint64_t size) noexcept {
    data.attributes = attributes;
    data.size = size;
    CopyBounded(data.name, name, std::size(data.name));
}

bool IsSeparator(char16_t c) noexcept { return c == u'\\' || c == u'/'; }

}  // namespace

RecordedFileSystem::RecordedFileSystem(FileTree& tree, WriteBudget& budget,
                                       std::vector<std::pair<char16_t, std::u16string>> volumes)
    : m_tree(tree), m_budget(budget), m_volumes(std::move(volumes)) {}

Win32Error RecordedFileSystem::Describe(const char16_t* path, FileInfo& info) {
    WinPath parsed;
    if (const Win32Error error = ParsePath(path, parsed); error != kErrorSuccess) return error;
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
    if (found.error != kErrorSuccess) return found.error;
    if (found.mapped != nullptr) {
        if (const Win32Error error = found.mapped->Describe(found.rest, info); error != kErrorSuccess) return error;
    } else {
        info = {m_tree.AttributesOf(*found.entry), m_tree.SizeOf(*found.entry)};
    }
    const bool fileAsFolder = parsed.endsInSeparator && (info.attributes & kAttributeDirectory) == 0;
    return fileAsFolder ? kErrorInvalidName : kErrorSuccess;
}

std::uint32_t RecordedFileSystem::GetAttributes(const char16_t* path) try {
    // The commonest question of all: about what is there, for which no size is asked for, or about a command line,
    // which is no path.
    if (HasNoRoot(path)) return Note(kErrorPathNotFound), kInvalidAttributes;
    if (const PathTrail* const trail = m_tree.FindPlain(path)) return m_tree.AttributesOf(*trail->Last().entry);
    FileInfo info;
    return Note(Describe(path, info)) == kErrorSuccess ? info.attributes : kInvalidAttributes;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory), kInvalidAttributes;
}

Win32Error RecordedFileSystem::GetInfo(const char16_t* path, FileInfo& info) try {
    return Note(Describe(path, info));
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::FindFirst(const char16_t* pattern, FindHandle& find, FindData& data) try {
    find = kInvalidFile;
    const std::u16string_view text(pattern);
    const auto last = std::find_if(text.rbegin(), text.rend(), IsSeparator);
    const std::u16string_view mask(last.base(), text.end());
    if (last == text.rend() || mask.empty()) {
        // A folder without a mask, or no path at all.
        FileInfo info;
        const Win32Error error = Describe(pattern, info);
        return Note(error == kErrorSuccess || error == kErrorInvalidName ? kErrorFileNotFound : error);
    }
    auto opened = std::make_shared<OpenFind>(mask);
    const Win32Error error = StartFind(text.substr(0, text.size() - mask.size()), mask, *opened);
    if (error != kErrorSuccess) return Note(error);
    if (!Step(*opened, data)) return Note(kErrorFileNotFound);
    find = m_finds.Add(std::move(opened));
    return kErrorSuccess;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::StartFind(std::u16string_view folder, std::u16string_view mask, OpenFind& find) {
    WinPath parsed;
    // A plain name is looked up, since its folder may be large.
    if (!find.mask.HasWildcards()) {
        const std::u16string whole = std::u16string(folder).append(mask);
        if (const Win32Error error = ParsePath(whole, parsed); error != kErrorSuccess) return error;
        if (parsed.text.size() == 3) return kErrorFileNotFound;
        const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
        if (found.error != kErrorSuccess) return found.error;
        if (found.mapped == nullptr) {
            // By the name that it has, which may be the long form of the one asked for.
            find.mask = FileMask(u"*");
            find.entries.push_back(found.entry);
            return kErrorSuccess;
        }
        MappedFolder::Item item;
        Win32Error error = found.mapped->Describe(found.rest, item.info);
        if (error == kErrorSuccess) error = found.mapped->RealNames(found.rest, item.name);
        if (error != kErrorSuccess) return error;
        if (found.rest.empty()) item.name = found.entry->name;
        item.name.erase(0, item.name.rfind(u'\\') + 1);
        find.mask = FileMask(u"*");
        find.items.push_back(std::move(item));
        return kErrorSuccess;
    }
    if (const Win32Error error = ParsePath(folder, parsed); error != kErrorSuccess) return error;
    const bool forbidden = std::any_of(mask.begin(), mask.end(),
                                       [](char16_t c) { return IsForbiddenInName(c) && c != u'*' && c != u'?'; });
    if (forbidden) return kErrorInvalidName;
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::Followed);
    if (found.error != kErrorSuccess) return found.error == kErrorFileNotFound ? kErrorPathNotFound : found.error;
    if (found.mapped == nullptr && found.entry->kind != SourceKind::Folder) return kErrorPathNotFound;
    if (found.entry != nullptr && found.entry->extras && found.entry->extras->denied) return kErrorAccessDenied;
    find.dotsLeft = parsed.text.size() == 3 ? 0 : 2;
    if (found.mapped != nullptr) {
        const Win32Error error = found.mapped->List(found.rest, find.items);
        return error == kErrorFileNotFound ? kErrorPathNotFound : error;
    }
    return m_tree.FolderOf(*found.entry).List(find.entries);
}

bool RecordedFileSystem::Step(OpenFind& find, FindData& data) {
    while (find.dotsLeft > 0) {
        const std::u16string_view name = find.dotsLeft-- == 2 ? u"." : u"..";
        if (!find.mask.Matches(name)) continue;
        Fill(data, name, kAttributeDirectory, 0);
        return true;
    }
    while (find.next < find.entries.size()) {
        FileEntry& entry = *find.entries[find.next++];
        if (!find.mask.Matches(entry.name)) {
            const std::u16string shortName = entry.parent != nullptr ? entry.parent->ShortNameOf(entry) : u"";
            if (shortName.empty() || !find.mask.Matches(shortName)) continue;
        }
        Fill(data, entry.name, m_tree.AttributesOf(entry), m_tree.SizeOf(entry));
        return true;
    }
    while (find.next < find.items.size()) {
        const MappedFolder::Item& item = find.items[find.next++];
        if (!find.mask.Matches(item.name)) continue;
        Fill(data, item.name, item.info.attributes, item.info.size);
        return true;
    }
    return false;
}

Win32Error RecordedFileSystem::FindNext(FindHandle find, FindData& data) try {
    const std::shared_ptr<OpenFind> opened = m_finds.Find(find);
    if (!opened) return Note(kErrorInvalidHandle);
    return Step(*opened, data) ? kErrorSuccess : Note(kErrorNoMoreFiles);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

void RecordedFileSystem::FindClose(FindHandle find) {
    if (!m_finds.Take(find)) SetLastFailure(kErrorInvalidHandle);
}

Win32Error RecordedFileSystem::Read(FileHandle file, void* buffer, std::uint32_t size, std::uint32_t& done) try {
    done = 0;
    const std::shared_ptr<OpenFile> opened = m_files.Find(file);
    if (!opened) return Note(kErrorInvalidHandle);
    if ((opened->access & kGenericRead) == 0) return Note(kErrorAccessDenied);
    const Win32Error error = opened->stream->ReadAt(opened->position, buffer, size, done);
    opened->position += done;
    return Note(error);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::Write(FileHandle file, const void* buffer, std::uint32_t size, std::uint32_t& done) try {
    done = 0;
    const std::shared_ptr<OpenFile> opened = m_files.Find(file);
    if (!opened) return Note(kErrorInvalidHandle);
    if ((opened->access & kGenericWrite) == 0) return Note(kErrorAccessDenied);
    const Win32Error error = opened->stream->WriteAt(opened->position, buffer, size, done);
    opened->position += done;
    return Note(error);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::GetSize(FileHandle file, std::uint64_t& size) {
    const std::shared_ptr<OpenFile> opened = m_files.Find(file);
    return Note(opened ? opened->stream->GetSize(size) : kErrorInvalidHandle);
}

Win32Error RecordedFileSystem::SetPosition(FileHandle file, std::uint64_t position) {
    const std::shared_ptr<OpenFile> opened = m_files.Find(file);
    if (!opened) return Note(kErrorInvalidHandle);
    if (position > static_cast<std::uint64_t>(INT64_MAX)) return Note(kErrorInvalidParameter);
    opened->position = position;
    return kErrorSuccess;
}

Win32Error RecordedFileSystem::SetEnd(FileHandle file) try {
    const std::shared_ptr<OpenFile> opened = m_files.Find(file);
    if (!opened) return Note(kErrorInvalidHandle);
    if ((opened->access & kGenericWrite) == 0) return Note(kErrorAccessDenied);
    return Note(opened->stream->SetSize(opened->position));
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

void RecordedFileSystem::Close(FileHandle file) {
    const std::shared_ptr<OpenFile> opened = m_files.Take(file);
    if (!opened) {
        SetLastFailure(kErrorInvalidHandle);
        return;
    }
    if (!opened->identity.empty()) m_shares.Leave(opened->identity, opened->access, opened->share);
}

// A machine that is not live has one file system for processes of either width.
bool RecordedFileSystem::DisableRedirection(void*&) { return false; }

void RecordedFileSystem::RevertRedirection(void*) {}

}  // namespace roundup
