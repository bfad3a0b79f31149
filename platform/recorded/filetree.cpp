#include "platform/recorded/filetree.h"

#include "platform/filesystem.h"

namespace roundup {

FileTree::FileTree(std::unique_ptr<IFileSource> source) : m_source(std::move(source)), m_added(u"", nullptr) {
    for (FileEntry* root : {&m_root, static_cast<FileEntry*>(&m_added)}) {
        root->kind = SourceKind::Folder;
        root->attributes = kAttributeDirectory;
        root->size = 0;
    }
    // A tree may lie where one lay that threads remember.
    FolderNode::NamesChanged();
}

MappedFolder* FileTree::MappedAt(const FileEntry& entry) noexcept {
    const FolderNode* const folder = entry.folder.load(std::memory_order_acquire);
    return folder != nullptr ? folder->Mapped() : nullptr;
}

FileEntry* FileTree::DriveOf(char16_t letter) const noexcept {
    const char16_t upper = ToUpper(letter);
    return upper >= u'A' && upper <= u'Z' ? m_drives[static_cast<std::size_t>(upper - u'A')] : nullptr;
}

void FileTree::SetDrive(char16_t letter, FileEntry& folder) {
    m_drives[static_cast<std::size_t>(ToUpper(letter) - u'A')] = &folder;
    FolderNode::NamesChanged();
}

bool FileTree::HasDrive(char16_t letter) const noexcept { return DriveOf(letter) != nullptr; }

FileTree::Found FileTree::Find(const WinPath& path, Last last, std::vector<FileEntry*>* trail) {
    FileEntry* drive = DriveOf(path.Drive());
    if (drive == nullptr) {
        Found nothing;
        nothing.error = kErrorPathNotFound;
        return nothing;
    }
    Search search;
    return FindFrom(*drive, path.Parts(), path.endsInSeparator ? Last::Followed : last, search, trail);
}

// Part by part: a folder is entered, a link is replaced by what it leads to, a mount point starts a new search with
// the rest of the path, and a mapped folder takes the rest over.
FileTree::Found FileTree::FindFrom(FileEntry& start, std::u16string_view rest, Last last, Search& search,
                                   std::vector<FileEntry*>* trail) {
    Found found;
    found.entry = &start;
    for (;;) {
        FileEntry* entry = found.entry;
        if (rest.empty() && last == Last::AsItIs) {
            // A mapped folder answers for itself, so that its own rules hold for it too.
            found.mapped = MappedAt(*entry);
            return found;
        }
        if (entry->extras && !entry->extras->reparseTarget.empty()) return FollowMount(*entry, rest, last, search);
        if (entry->kind == SourceKind::Link) entry = FollowLink(*entry, search);
        if (entry == nullptr) {
            found.entry = nullptr;
            found.error = search.error == kErrorFileNotFound && !rest.empty() ? kErrorPathNotFound : search.error;
            return found;
        }
        found.entry = entry;
        if (entry->kind != SourceKind::Folder) {
            if (!rest.empty()) found.error = kErrorPathNotFound, found.entry = nullptr;
            return found;
        }
        if (MappedFolder* const mapped = MappedAt(*entry)) {
            found.mapped = mapped;
            found.rest = rest;
            return found;
        }
        if (rest.empty()) return found;
        FolderNode& folder = FolderOf(*entry);
        const std::u16string_view part = TakePart(rest);
        found.entry = folder.Find(part, found.error);
        if (found.entry == nullptr) {
            if (found.error == kErrorFileNotFound && !rest.empty()) found.error = kErrorPathNotFound;
            found.folder = &folder;
            found.leaf = part;
            return found;
        }
        if (trail != nullptr) trail->push_back(found.entry);
    }
}

FileTree::Found FileTree::FollowMount(const FileEntry& mount, std::u16string_view rest, Last last, Search& search) {
    Found found;
    found.error = kErrorCannotAccessFile;
    if (search.hops-- == 0) return found;
    WinPath target;
    if (ParsePath(mount.extras->reparseTarget, target) != kErrorSuccess) return found;
    FileEntry* drive = DriveOf(target.Drive());
    found.error = rest.empty() ? kErrorFileNotFound : kErrorPathNotFound;
    if (drive == nullptr) return found;
    auto text = std::make_shared<std::u16string>(target.Parts());
    if (!rest.empty()) {
        if (!text->empty()) text->push_back(u'\\');
        text->append(rest);
    }
    found = FindFrom(*drive, *text, last, search, nullptr);
    if (!found.text) found.text = std::move(text);
    return found;
}

FileEntry* FileTree::FollowLink(FileEntry& link, Win32Error& error) {
    Search search;
    FileEntry* target = FollowLink(link, search);
    error = target != nullptr ? kErrorSuccess : search.error;
    return target;
}

// Names in a link are those of the source's own system, so they must be met exactly. A link never leads through a
// mount point, a mapped folder or what the machine itself wrote: these are not in the source.
FileEntry* FileTree::FollowLink(FileEntry& link, Search& search) {
    search.error = kErrorCannotAccessFile;
    if (search.hops-- == 0) return nullptr;
    LinkTarget target;
    std::u16string path = link.parent->SourcePath();
    if (!path.empty()) path.push_back(u'\\');
    if (m_source->ReadLink(path.append(link.name), target) != kErrorSuccess || target.outside) return nullptr;

    FileEntry* entry = target.fromRoot ? &m_root : &link.parent->Self();
    for (const std::u16string& part : target.parts) {
        if (part == u"..") {
            if (entry->parent == nullptr) return nullptr;
            entry = &entry->parent->Self();
            continue;
        }
        search.error = kErrorFileNotFound;
        if (entry->kind != SourceKind::Folder) return nullptr;
        entry = FolderOf(*entry).Find(part, search.error);
        if (entry == nullptr) return nullptr;
        search.error = kErrorFileNotFound;
        if (entry->name != part || !entry->fromSource) return nullptr;
        if (entry->kind == SourceKind::Link) entry = FollowLink(*entry, search);
        if (entry == nullptr) return nullptr;
        search.error = kErrorCannotAccessFile;
    }
    return entry;
}

FileEntry& FileTree::AddDrive(char16_t letter) {
    const char16_t name[] = {letter, u':'};
    FileEntry* drive = FolderOf(m_added).Add(std::u16string_view(name, 2), SourceKind::Folder, nullptr, false);
    SetDrive(letter, *drive);
    return *drive;
}

// The folder that the entry is or leads to, if any.
FileEntry* FileTree::FolderBehind(FileEntry& entry) {
    Win32Error error = kErrorSuccess;
    FileEntry* target = entry.kind == SourceKind::Link ? FollowLink(entry, error) : &entry;
    return target != nullptr && target->kind == SourceKind::Folder ? target : nullptr;
}

FileEntry& FileTree::MakeFolder(const WinPath& path) {
    FileEntry* entry = HasDrive(path.Drive()) ? DriveOf(path.Drive()) : &AddDrive(path.Drive());
    for (std::u16string_view rest = path.Parts(); !rest.empty();) {
        FolderNode& folder = FolderOf(*entry);
        const std::u16string_view part = TakePart(rest);
        Win32Error error = kErrorSuccess;
        FileEntry* next = folder.Find(part, error);
        if (next != nullptr) next = FolderBehind(*next);
        entry = next != nullptr ? next : folder.Add(part, SourceKind::Folder, nullptr, false);
    }
    return *entry;
}

FileEntry& FileTree::CoverFolder(const WinPath& path) {
    WinPath above = path;
    const std::size_t cut = above.text.rfind(u'\\');
    const std::u16string name = above.text.substr(cut + 1);
    above.text.resize(cut < 3 ? 3 : cut);
    return *FolderOf(MakeFolder(above)).Add(name, SourceKind::Folder, nullptr, false);
}

std::uint32_t FileTree::AttributesOf(FileEntry& entry) {
    if (entry.kind != SourceKind::Link) return entry.attributes;
    Win32Error error = kErrorSuccess;
    const FileEntry* target = FollowLink(entry, error);
    const bool toFolder = target != nullptr && target->kind == SourceKind::Folder;
    return toFolder ? (entry.attributes & ~kAttributeArchive) | kAttributeDirectory : entry.attributes;
}

std::uint64_t FileTree::SizeOf(FileEntry& entry) {
    if (entry.kind != SourceKind::File) return 0;
    if (!entry.fromSource) return static_cast<const WrittenEntry&>(entry).content->Size();
    std::uint64_t size = entry.size.load(std::memory_order_relaxed);
    if (size != kUnknownSize) return size;
    std::u16string path = entry.parent->SourcePath();
    if (!path.empty()) path.push_back(u'\\');
    if (m_source->GetSize(path.append(entry.name), size) != kErrorSuccess) size = 0;
    entry.size.store(size, std::memory_order_relaxed);
    return size;
}

}  // namespace roundup
