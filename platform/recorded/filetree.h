// The drives of a machine: finds what a path leads to.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/foldernode.h"
#include "platform/recorded/pathtrail.h"
#include "platform/recorded/winpath.h"

namespace roundup {

// Set up by one thread, then read by any.
class FileTree {
  public:
    // What a path leads to. With error 0 it is either entry, or what lies at rest below the real folder mapped.
    // With error 2 it would be called leaf in folder.
    struct Found {
        Win32Error error = kErrorSuccess;
        FileEntry* entry = nullptr;
        FolderNode* folder = nullptr;
        std::u16string_view leaf;
        MappedFolder* mapped = nullptr;
        std::u16string_view rest;                    // may be empty: the mapped folder itself
        std::shared_ptr<const std::u16string> text;  // holds what leaf and rest show, when a mount point led there
    };
    // The last part of the path may itself be a link or a mount point.
    enum class Last { AsItIs, Followed };

    explicit FileTree(std::unique_ptr<IFileSource> source);

    // The folder that the source's root shows, for drives to be taken from it.
    FileEntry& Root() noexcept { return m_root; }
    void SetDrive(char16_t letter, FileEntry& folder);
    bool HasDrive(char16_t letter) const noexcept;
    // A drive that the source does not have: empty, in memory.
    FileEntry& AddDrive(char16_t letter);

    // The path must stay as it is while the answer is in use. trail, when given, receives the entry of each part of
    // the path as it is written, as far as they are not in a mapped folder or behind a mount point.
    Found Find(const WinPath& path, Last last, std::vector<FileEntry*>* trail = nullptr);
    // The entries of the parts of a path that is written plainly ("C:\one\two") and leads through folders of this
    // tree, the last part as it is; null says nothing about the path. Belongs to the thread and holds until its next
    // question.
    const PathTrail* FindPlain(const char16_t* path);
    // The folder at the path, its drive included, made in memory with those on the way where it is not there; a file,
    // or a link that cannot be followed, is covered by it.
    FileEntry& MakeFolder(const WinPath& path);
    // A new folder in memory at the path, in place of whatever is there. The path is no drive's root.
    FileEntry& CoverFolder(const WinPath& path);

    FolderNode& FolderOf(FileEntry& entry) { return FolderNode::Of(entry, m_source.get()); }
    IFileSource& Source() noexcept { return *m_source; }

    // 0x400 and kin in; a link has the directory attribute when it leads to a folder.
    std::uint32_t AttributesOf(FileEntry& entry);
    std::uint64_t SizeOf(FileEntry& entry);
    // What a link leads to; null when it does not exist or cannot be followed, with the reason in error.
    FileEntry* FollowLink(FileEntry& link, Win32Error& error);

  private:
    // Links and mount points that one search follows before it gives up: a chain of more is taken for a circle.
    static constexpr int kMostHops = 63;

    struct Search {
        int hops = kMostHops;
        Win32Error error = kErrorSuccess;
    };

    Found FindFrom(FileEntry& start, std::u16string_view rest, Last last, Search& search,
                   std::vector<FileEntry*>* trail);
    Found FollowMount(const FileEntry& mount, std::u16string_view rest, Last last, Search& search);
    FileEntry* FollowLink(FileEntry& link, Search& search);
    FileEntry* FolderBehind(FileEntry& entry);
    FileEntry* DriveOf(char16_t letter) const noexcept;
    // What stands in place of the folder that the entry is, if anything.
    static MappedFolder* MappedAt(const FileEntry& entry) noexcept;
    static bool IsPlainFolder(const FileEntry& entry);

    std::unique_ptr<IFileSource> m_source;
    FileEntry m_root;
    WrittenEntry m_added;  // holds the drives that the source does not have
    std::array<FileEntry*, 26> m_drives{};
};

}  // namespace roundup
