// One entry of a folder.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/recorded/filesource.h"
#include "platform/recorded/memoryfile.h"

namespace roundup {

class FolderNode;

// What few entries have.
struct EntryExtras {
    std::u16string shortName;      // empty: none
    std::u16string reparseTarget;  // path that a mount point leads to; empty: none
    bool denied = false;           // is there, and cannot be opened
};

struct FileEntry {
    std::u16string_view name;
    FolderNode* parent = nullptr;  // null for the root alone
    SourceKind kind = SourceKind::File;
    bool fromSource = true;
    std::uint32_t attributes = 0;                   // set before the machine is used
    std::shared_ptr<EntryExtras> extras;            // likewise
    std::atomic<std::uint64_t> size{kUnknownSize};  // of a source's file, once it was asked for
    std::atomic<FolderNode*> folder{nullptr};       // of a folder, once it was walked through

    FileEntry() = default;
    FileEntry(const FileEntry&) = delete;
    FileEntry& operator=(const FileEntry&) = delete;
    ~FileEntry();
};

// An entry that the machine's own doings made: the only kind that is not fromSource.
struct WrittenEntry final : FileEntry {
    WrittenEntry(std::u16string_view ownName, std::shared_ptr<MemoryFile> ownContent)
        : text(ownName), content(std::move(ownContent)) {
        name = text;
        fromSource = false;
    }
    const std::u16string text;
    const std::shared_ptr<MemoryFile> content;  // null for a folder
};

}  // namespace roundup
