// The folders of a machine's drives: what the source lists, once, and what the machine's own writes changed.
//
// Entries and folders stay where they are until the machine ends, also those that were deleted, so that every thread
// may hold on to what it found. Looking a name up takes no lock in a folder that was never written to.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/recorded/fileentry.h"
#include "platform/recorded/folderlisting.h"
#include "utility/casemap.h"

namespace roundup {

class MappedFolder;

class alignas(FileEntry) FolderNode {
  public:
    FolderNode(const FolderNode&) = delete;
    FolderNode& operator=(const FolderNode&) = delete;

    FileEntry& Self() const noexcept { return m_self; }
    // Path within the source: names joined by backslashes.
    std::u16string SourcePath() const;

    // The entry of that name or short name, null without one. error then tells why: 2, or what kept the folder from
    // being read.
    FileEntry* Find(std::u16string_view name, Win32Error& error);
    // All entries in ascending order of their upper-cased names.
    Win32Error List(std::vector<FileEntry*>& entries);

    // Adds an entry that the machine's own doings made; one of the same name is shadowed. Null, and nothing is
    // done, when onlyNew is set and there is one already.
    FileEntry* Add(std::u16string_view name, SourceKind kind, std::shared_ptr<MemoryFile> content, bool onlyNew);
    // The entry is no longer found; false when another one has taken its place meanwhile.
    bool Remove(const FileEntry& entry);
    void AddShortName(std::u16string_view shortName, FileEntry& entry);
    // Empty for an entry of this folder that has none.
    std::u16string ShortNameOf(const FileEntry& entry) const;

    // What lies in this folder is what lies in a real one. Set before the machine is used.
    void Map(MappedFolder* mapped) noexcept {
        m_mapped = mapped;
        NamesChanged();
    }
    MappedFolder* Mapped() const noexcept { return m_mapped; }

    // Goes up whenever a name of any tree has come to stand for something else, for what remembers entries by path.
    static std::uint64_t NamesVersion() noexcept { return s_namesVersion.load(std::memory_order_acquire); }
    static void NamesChanged() noexcept { s_namesVersion.fetch_add(1, std::memory_order_acq_rel); }

    // The folder of an entry that is one, made and listed at first use, once. source is null for a folder that the
    // source does not have.
    static FolderNode& Of(FileEntry& entry, IFileSource* source);
    // Null does nothing.
    static void Destroy(FolderNode* folder) noexcept;

  private:
    template <class T>
    using NameMap = std::unordered_map<std::u16string, T, NoCaseHash, NoCaseEqual>;
    struct Changes {
        std::shared_mutex lock;                        // guards the three below
        NameMap<std::unique_ptr<WrittenEntry>> names;  // null: the source's entry of that name was deleted
        NameMap<std::u16string> shortNames;            // to the name that it is short for
        std::vector<std::unique_ptr<WrittenEntry>> shadowed;
    };

    // The node stands in front of its listing, in one block.
    static FolderNode* Make(FileEntry& entry, IFileSource* source);
    FolderNode(FileEntry& self, IFileSource* source, const std::vector<SourceEntry>& listed, Win32Error error) noexcept;
    ~FolderNode();

    Changes& ChangesForWriting();
    FileEntry* FindLocked(const Changes& changes, std::u16string_view name) const;
    FileEntry* FindListed(std::u16string_view name) const;

    inline static std::atomic<std::uint64_t> s_namesVersion{1};

    FileEntry& m_self;
    IFileSource* const m_source;  // null for a folder that the source does not have
    MappedFolder* m_mapped = nullptr;
    std::atomic<Changes*> m_changes{nullptr};  // made once
    const FolderListing m_listing;             // with its room behind this node
};

}  // namespace roundup
