#include "platform/recorded/foldernode.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>

#include "platform/filesystem.h"
#include "platform/recorded/wineshortname.h"
#include "platform/threading.h"

namespace roundup {

namespace {

// So that a node with the first of its entries takes as few cache lines as it can.
constexpr std::align_val_t kBlockAlignment{64};

// Where the path of an entry leads from the root of the source; empty for the root itself.
std::u16string PathOf(const FileEntry& entry) {
    if (entry.parent == nullptr) return {};
    std::u16string path = entry.parent->SourcePath();
    if (!path.empty()) path.push_back(u'\\');
    return path.append(entry.name);
}

// Held while a folder is made: it is listed by one thread, once, and the others wait. Folders share them, since there
// are very many. Entries of folders that are made alike lie at even distances, so all bits of the address take part.
Mutex& MakingOf(const FileEntry& entry) noexcept {
    static std::array<Mutex, 32> locks;
    const auto mixed = std::uint64_t{reinterpret_cast<std::uintptr_t>(&entry)} * 0x9E3779B97F4A7C15U;
    return locks[static_cast<std::size_t>(mixed >> 32) % locks.size()];
}

}  // namespace

FileEntry::~FileEntry() { FolderNode::Destroy(folder.load()); }

FolderNode::FolderNode(FileEntry& self, IFileSource* source, const std::vector<SourceEntry>& listed,
                       Win32Error error) noexcept
    : m_self(self), m_source(source), m_listing(*this, reinterpret_cast<std::byte*>(this + 1), listed, error) {}

FolderNode::~FolderNode() { delete m_changes.load(); }

FolderNode& FolderNode::Of(FileEntry& entry, IFileSource* source) {
    if (FolderNode* made = entry.folder.load(std::memory_order_acquire)) return *made;
    const std::lock_guard guard(MakingOf(entry));
    if (FolderNode* made = entry.folder.load(std::memory_order_relaxed)) return *made;
    FolderNode* const made = Make(entry, entry.fromSource ? source : nullptr);
    entry.folder.store(made, std::memory_order_release);
    return *made;
}

FolderNode* FolderNode::Make(FileEntry& entry, IFileSource* source) {
    static_assert(sizeof(FolderNode) % alignof(FileEntry) == 0);
    std::vector<SourceEntry> listed;
    const Win32Error error = source != nullptr ? source->List(PathOf(entry), listed) : kErrorSuccess;
    FolderListing::Prepare(listed);
    void* const block = ::operator new(sizeof(FolderNode) + FolderListing::RoomFor(listed), kBlockAlignment);
    return new (block) FolderNode(entry, source, listed, error);
}

void FolderNode::Destroy(FolderNode* folder) noexcept {
    if (folder == nullptr) return;
    folder->~FolderNode();
    ::operator delete(folder, kBlockAlignment);
}

// Filled from its end, since the way goes up.
std::u16string FolderNode::SourcePath() const {
    std::size_t length = 0;
    for (const FolderNode* node = this; node->m_self.parent != nullptr; node = node->m_self.parent) {
        length += node->m_self.name.size() + (length != 0 ? 1 : 0);
    }
    std::u16string path(length, u'\\');
    std::size_t end = length;
    for (const FolderNode* node = this; node->m_self.parent != nullptr; node = node->m_self.parent) {
        const std::u16string_view name = node->m_self.name;
        end -= name.size();
        path.replace(end, name.size(), name);
        if (end != 0) --end;
    }
    return path;
}

FolderNode::Changes& FolderNode::ChangesForWriting() {
    if (Changes* changes = m_changes.load(std::memory_order_acquire)) return *changes;
    auto fresh = std::make_unique<Changes>();
    Changes* expected = nullptr;
    if (!m_changes.compare_exchange_strong(expected, fresh.get(), std::memory_order_acq_rel)) return *expected;
    return *fresh.release();
}

// A name that is not there may be the short one of a name that is; only in these sources is it worth a look at all.
FileEntry* FolderNode::FindListed(std::u16string_view name) const {
    if (FileEntry* found = m_listing.Find(name)) return found;
    if (!LooksLikeWineShortName(name) || m_source == nullptr || !m_source->HasWineShortNames()) return nullptr;
    for (FileEntry& entry : m_listing.Entries()) {
        if (EqualsNoCase(WineShortName(entry.name), name)) return &entry;
    }
    return nullptr;
}

FileEntry* FolderNode::FindLocked(const Changes& changes, std::u16string_view name) const {
    if (const auto shortName = changes.shortNames.find(name); shortName != changes.shortNames.end()) {
        name = shortName->second;
    }
    if (const auto change = changes.names.find(name); change != changes.names.end()) return change->second.get();
    FileEntry* const listed = FindListed(name);
    // Found by its short name, it may have been written over or deleted.
    if (listed == nullptr || EqualsNoCase(listed->name, name)) return listed;
    const auto change = changes.names.find(listed->name);
    return change != changes.names.end() ? change->second.get() : listed;
}

FileEntry* FolderNode::Find(std::u16string_view name, Win32Error& error) {
    FileEntry* found = nullptr;
    if (Changes* changes = m_changes.load(std::memory_order_acquire)) {
        const std::shared_lock guard(changes->lock);
        found = FindLocked(*changes, name);
    } else {
        found = FindListed(name);
    }
    if (found == nullptr) error = m_listing.Error() != kErrorSuccess ? m_listing.Error() : kErrorFileNotFound;
    return found;
}

Win32Error FolderNode::List(std::vector<FileEntry*>& entries) {
    Changes* changes = m_changes.load(std::memory_order_acquire);
    std::shared_lock<std::shared_mutex> guard;
    if (changes != nullptr) guard = std::shared_lock(changes->lock);
    entries.reserve(m_listing.Entries().size() + (changes != nullptr ? changes->names.size() : 0));
    for (FileEntry& entry : m_listing.Entries()) {
        if (changes == nullptr || !changes->names.contains(entry.name)) entries.push_back(&entry);
    }
    if (changes == nullptr || changes->names.empty()) return m_listing.Error();
    const auto fromSource = static_cast<std::ptrdiff_t>(entries.size());
    for (const auto& [name, change] : changes->names) {
        if (change) entries.push_back(change.get());
    }
    const auto before = [](const FileEntry* a, const FileEntry* b) { return CompareFolded(a->name, b->name) < 0; };
    std::sort(entries.begin() + fromSource, entries.end(), before);
    std::inplace_merge(entries.begin(), entries.begin() + fromSource, entries.end(), before);
    return kErrorSuccess;
}

FileEntry* FolderNode::Add(std::u16string_view name, SourceKind kind, std::shared_ptr<MemoryFile> content,
                           bool onlyNew) {
    Changes& changes = ChangesForWriting();
    const std::lock_guard guard(changes.lock);
    FileEntry* old = FindLocked(changes, name);
    if (old != nullptr && onlyNew) return nullptr;
    // The name on disk stays that of the file that is written over.
    auto entry = std::make_unique<WrittenEntry>(old != nullptr ? old->name : name, std::move(content));
    entry->parent = this;
    entry->kind = kind;
    entry->attributes = kind == SourceKind::Folder ? kAttributeDirectory : kAttributeArchive;
    if (old != nullptr && old->kind == kind) {
        entry->attributes = old->attributes;
        entry->extras = old->extras;
    }
    std::unique_ptr<WrittenEntry>& place = changes.names[entry->text];
    if (place) changes.shadowed.push_back(std::move(place));
    place = std::move(entry);
    NamesChanged();
    return place.get();
}

bool FolderNode::Remove(const FileEntry& entry) {
    Changes& changes = ChangesForWriting();
    const std::lock_guard guard(changes.lock);
    const std::u16string name(entry.name);
    if (FindLocked(changes, name) != &entry) return false;
    std::unique_ptr<WrittenEntry>& place = changes.names[name];
    if (place) changes.shadowed.push_back(std::move(place));
    if (m_listing.Find(name) == nullptr) changes.names.erase(name);
    NamesChanged();
    return true;
}

std::u16string FolderNode::ShortNameOf(const FileEntry& entry) const {
    if (entry.extras && !entry.extras->shortName.empty()) return entry.extras->shortName;
    return m_source != nullptr && m_source->HasWineShortNames() ? WineShortName(entry.name) : std::u16string();
}

void FolderNode::AddShortName(std::u16string_view shortName, FileEntry& entry) {
    Changes& changes = ChangesForWriting();
    const std::lock_guard guard(changes.lock);
    changes.shortNames.insert_or_assign(std::u16string(shortName), std::u16string(entry.name));
    if (!entry.extras) entry.extras = std::make_shared<EntryExtras>();
    entry.extras->shortName = shortName;
    NamesChanged();
}

}  // namespace roundup
