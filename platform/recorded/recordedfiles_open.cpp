// Opening, creating and deleting: where reads of the source end and writes in memory begin.
#include <algorithm>
#include <new>

#include "platform/recorded/lastfailure.h"
#include "platform/recorded/recordedfiles.h"

namespace roundup {

namespace {

Win32Error Note(Win32Error error) noexcept {
    if (error != kErrorSuccess) SetLastFailure(error);
    return error;
}

// Tells one file from all others, whatever its content is kept in: its folder and its folded name.
std::u16string IdentityOf(const void* folder, std::u16string_view name) {
    const auto number = reinterpret_cast<std::uintptr_t>(folder);
    std::u16string identity;
    identity.reserve(name.size() + sizeof number / sizeof(char16_t));
    for (std::size_t shift = 0; shift < sizeof number * 8; shift += 16) {
        identity.push_back(static_cast<char16_t>(number >> shift));
    }
    for (const char16_t c : name) identity.push_back(ToUpper(c));
    return identity;
}

bool IsDenied(const FileEntry& entry) noexcept { return entry.extras && entry.extras->denied; }

}  // namespace

Win32Error RecordedFileSystem::Open(const char16_t* path, std::uint32_t access, std::uint32_t share,
                                    std::uint32_t disposition, FileHandle& file) try {
    file = kInvalidFile;
    if (disposition < kCreateNew || disposition > kOpenAlways) return Note(kErrorInvalidParameter);
    WinPath parsed;
    if (const Win32Error error = ParsePath(path, parsed); error != kErrorSuccess) return Note(error);
    auto opened = std::make_shared<OpenFile>();
    opened->access = access;
    opened->share = share;
    const Win32Error error = OpenStream(parsed, access, share, disposition, *opened);
    if (error != kErrorSuccess) return Note(error);
    file = m_files.Add(std::move(opened));
    return kErrorSuccess;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::OpenStream(const WinPath& path, std::uint32_t access, std::uint32_t share,
                                          std::uint32_t disposition, OpenFile& file) {
    const FileTree::Found found = m_tree.Find(path, FileTree::Last::Followed);
    const bool creates = disposition != kOpenExisting;
    if (found.error != kErrorSuccess && !(found.error == kErrorFileNotFound && creates)) return found.error;
    if (found.error == kErrorFileNotFound && found.folder == nullptr) return kErrorCannotAccessFile;
    const bool isFolder =
        found.error == kErrorSuccess && found.mapped == nullptr && found.entry->kind == SourceKind::Folder;
    if (isFolder) return disposition == kCreateNew ? kErrorFileExists : kErrorAccessDenied;
    if (path.endsInSeparator) return kErrorInvalidName;

    if (found.mapped != nullptr) {
        file.identity = IdentityOf(found.mapped, found.rest);
    } else if (found.entry != nullptr) {
        file.identity = IdentityOf(found.entry->parent, found.entry->name);
    } else {
        file.identity = IdentityOf(found.folder, found.leaf);
    }
    if (!m_shares.Enter(file.identity, access, share)) {
        file.identity.clear();
        return kErrorSharingViolation;
    }
    const bool write = (access & kGenericWrite) != 0;
    Win32Error error = kErrorSuccess;
    if (found.mapped != nullptr) {
        error = found.mapped->Open(found.rest, write, disposition, file.stream);
    } else if (found.entry != nullptr) {
        error = OpenEntry(*found.entry, write, disposition, file.stream);
    } else {
        error = CreateIn(*found.folder, found.leaf, file.stream);
        // Another thread was faster.
        if (error == kErrorFileExists && disposition != kCreateNew) {
            Win32Error gone = kErrorSuccess;
            FileEntry* entry = found.folder->Find(found.leaf, gone);
            error = entry != nullptr ? OpenEntry(*entry, write, disposition, file.stream) : gone;
        }
    }
    if (error != kErrorSuccess) m_shares.Leave(file.identity, access, share);
    if (error == kErrorSuccess && write && found.mapped == nullptr) {
        const std::lock_guard guard(m_writtenLock);
        m_written.insert(path.text);
    }
    return error;
}

std::vector<std::u16string> RecordedFileSystem::WrittenPaths() const {
    const std::lock_guard guard(m_writtenLock);
    std::vector<std::u16string> written(m_written.begin(), m_written.end());
    std::ranges::sort(written);
    return written;
}

Win32Error RecordedFileSystem::OpenEntry(FileEntry& entry, bool write, std::uint32_t disposition,
                                         std::unique_ptr<IFileStream>& stream) {
    if (disposition == kCreateNew) return kErrorFileExists;
    if (entry.kind == SourceKind::Other || IsDenied(entry)) return kErrorAccessDenied;
    const bool empties = disposition == kCreateAlways;
    if ((write || empties) && (entry.attributes & kAttributeReadOnly) != 0) return kErrorAccessDenied;
    if (entry.fromSource) {
        return write || empties ? CopyForWriting(entry, !empties, stream) : OpenSource(entry, stream);
    }
    std::shared_ptr<MemoryFile> content = static_cast<const WrittenEntry&>(entry).content;
    if (!content) return kErrorAccessDenied;
    if (empties) {
        if (const Win32Error error = content->SetSize(0); error != kErrorSuccess) return error;
    }
    stream = OpenMemoryFile(std::move(content));
    return kErrorSuccess;
}

std::u16string RecordedFileSystem::SourcePath(const FileEntry& entry) {
    std::u16string path = entry.parent->SourcePath();
    if (!path.empty()) path.push_back(u'\\');
    return path.append(entry.name);
}

Win32Error RecordedFileSystem::OpenSource(const FileEntry& entry, std::unique_ptr<IFileStream>& stream) {
    return m_tree.Source().Open(SourcePath(entry), stream);
}

std::vector<std::byte> RecordedFileSystem::ReadSecurity(const char16_t* path) {
    WinPath parsed;
    if (ParsePath(path, parsed) != kErrorSuccess) return {};
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
    if (found.error != kErrorSuccess || found.mapped != nullptr) return {};
    const FileEntry& entry = *found.entry;
    if (!entry.fromSource || entry.parent == nullptr) return {};
    return m_tree.Source().ReadSecurity(SourcePath(entry));
}

Win32Error RecordedFileSystem::CreateIn(FolderNode& folder, std::u16string_view name,
                                        std::unique_ptr<IFileStream>& stream) {
    auto content = std::make_shared<MemoryFile>(m_budget);
    if (folder.Add(name, SourceKind::File, content, true) == nullptr) return kErrorFileExists;
    stream = OpenMemoryFile(std::move(content));
    return kErrorSuccess;
}

// A file of the source that is opened for writing is shadowed by a copy in memory from then on.
Win32Error RecordedFileSystem::CopyForWriting(FileEntry& entry, bool keepContent,
                                              std::unique_ptr<IFileStream>& stream) {
    constexpr std::uint32_t kPiece = 0x10000;
    auto content = std::make_shared<MemoryFile>(m_budget);
    if (keepContent) {
        std::unique_ptr<IFileStream> source;
        Win32Error error = OpenSource(entry, source);
        std::vector<std::byte> piece(kPiece);
        std::uint64_t position = 0;
        for (std::uint32_t done = kPiece; error == kErrorSuccess && done != 0; position += done) {
            error = source->ReadAt(position, piece.data(), kPiece, done);
            std::uint32_t written = 0;
            if (error == kErrorSuccess) error = content->WriteAt(position, piece.data(), done, written);
        }
        if (error != kErrorSuccess) return error;
    }
    (void)entry.parent->Add(entry.name, SourceKind::File, content, false);
    stream = OpenMemoryFile(std::move(content));
    return kErrorSuccess;
}

Win32Error RecordedFileSystem::Delete(const char16_t* path) try {
    WinPath parsed;
    if (const Win32Error error = ParsePath(path, parsed); error != kErrorSuccess) return Note(error);
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
    if (found.error != kErrorSuccess) return Note(found.error);
    if (found.mapped != nullptr) {
        if (m_shares.IsOpen(IdentityOf(found.mapped, found.rest))) return Note(kErrorSharingViolation);
        return Note(found.mapped->Delete(found.rest));
    }
    FileEntry& entry = *found.entry;
    const bool folder = (m_tree.AttributesOf(entry) & kAttributeDirectory) != 0;
    if (folder || IsDenied(entry) || (entry.attributes & kAttributeReadOnly) != 0) return Note(kErrorAccessDenied);
    if (m_shares.IsOpen(IdentityOf(entry.parent, entry.name))) return Note(kErrorSharingViolation);
    if (!entry.parent->Remove(entry)) return Note(kErrorFileNotFound);
    // The entry stays in memory, its content need not.
    if (!entry.fromSource) (void)static_cast<const WrittenEntry&>(entry).content->SetSize(0);
    return kErrorSuccess;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::CreateDirectory(const char16_t* path) try {
    WinPath parsed;
    if (const Win32Error error = ParsePath(path, parsed); error != kErrorSuccess) return Note(error);
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
    if (found.mapped != nullptr) {
        return Note(found.rest.empty() ? kErrorAlreadyExists : found.mapped->CreateFolder(found.rest));
    }
    if (found.error == kErrorSuccess) return Note(kErrorAlreadyExists);
    if (found.error != kErrorFileNotFound || found.folder == nullptr) return Note(found.error);
    const FileEntry* made = found.folder->Add(found.leaf, SourceKind::Folder, nullptr, true);
    return made != nullptr ? kErrorSuccess : Note(kErrorAlreadyExists);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

}  // namespace roundup
