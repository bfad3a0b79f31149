// Files of a machine that is not live.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/filesystem.h"
#include "platform/recorded/filemask.h"
#include "platform/recorded/filetree.h"
#include "platform/recorded/handletable.h"
#include "platform/recorded/mappedfolder.h"
#include "platform/recorded/sharetable.h"
#include "platform/threading.h"

namespace roundup {

// Shows the drives of a tree and the real folders mapped into it. All writes to drives stay in memory. An operation
// that memory is short for ends with that error, as one of the platform does: destructors call some of them.
class RecordedFileSystem final : public IFileSystem {
  public:
    // volumes: drive letter in upper case and the name of its file system; NTFS where none is told.
    RecordedFileSystem(FileTree& tree, WriteBudget& budget, std::vector<std::pair<char16_t, std::u16string>> volumes);

    std::uint32_t GetAttributes(const char16_t* path) override;
    Win32Error GetInfo(const char16_t* path, FileInfo& info) override;
    Win32Error FindFirst(const char16_t* pattern, FindHandle& find, FindData& data) override;
    Win32Error FindNext(FindHandle find, FindData& data) override;
    void FindClose(FindHandle find) override;
    Win32Error Open(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                    FileHandle& file) override;
    Win32Error Read(FileHandle file, void* buffer, std::uint32_t size, std::uint32_t& done) override;
    Win32Error Write(FileHandle file, const void* buffer, std::uint32_t size, std::uint32_t& done) override;
    Win32Error GetSize(FileHandle file, std::uint64_t& size) override;
    Win32Error SetPosition(FileHandle file, std::uint64_t position) override;
    Win32Error SetEnd(FileHandle file) override;
    void Close(FileHandle file) override;
    Win32Error Delete(const char16_t* path) override;
    Win32Error CreateDirectory(const char16_t* path) override;
    std::uint32_t GetLongPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetShortPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetFullPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override;
    Win32Error GetVolumeFileSystem(const char16_t* root, char16_t* name, std::uint32_t size) override;
    Win32Error ReadReparsePoint(const char16_t* path, void* buffer, std::uint32_t size, std::uint32_t& done) override;
    bool DisableRedirection(void*& state) override;
    void RevertRedirection(void* state) override;

    // The self-relative security descriptor of what stands at the path; empty where the source shows none.
    std::vector<std::byte> ReadSecurity(const char16_t* path);

    // Whole paths of the files that have been opened for writing and lie in memory, each once, sorted; some may have
    // gone again.
    std::vector<std::u16string> WrittenPaths() const;

  private:
    struct OpenFile {
        std::unique_ptr<IFileStream> stream;
        std::uint64_t position = 0;
        std::uint32_t access = 0;
        std::uint32_t share = 0;
        std::u16string identity;  // empty when nothing was noted in m_shares
    };
    // A running enumeration. Of the two lists only one is in use.
    struct OpenFind {
        explicit OpenFind(std::u16string_view text) : mask(text) {}
        FileMask mask;
        std::vector<FileEntry*> entries;
        std::vector<MappedFolder::Item> items;
        std::size_t next = 0;
        int dotsLeft = 0;  // "." and "..", told first
    };
    // How the parts of a path are replaced by their long or short names.
    enum class Form { Long, Short };

    Win32Error Describe(const char16_t* path, FileInfo& info);
    Win32Error StartFind(std::u16string_view folder, std::u16string_view mask, OpenFind& find);
    bool Step(OpenFind& find, FindData& data);
    Win32Error OpenStream(const WinPath& path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                          OpenFile& file);
    Win32Error OpenEntry(FileEntry& entry, bool write, std::uint32_t disposition, std::unique_ptr<IFileStream>& stream);
    static std::u16string SourcePath(const FileEntry& entry);
    Win32Error OpenSource(const FileEntry& entry, std::unique_ptr<IFileStream>& stream);
    Win32Error CreateIn(FolderNode& folder, std::u16string_view name, std::unique_ptr<IFileStream>& stream);
    Win32Error CopyForWriting(FileEntry& entry, bool keepContent, std::unique_ptr<IFileStream>& stream);
    std::uint32_t ConvertPath(const char16_t* path, Form form, char16_t* buffer, std::uint32_t size);
    Win32Error PartNames(const WinPath& path, Form form, std::vector<std::u16string>& names);
    Win32Error LinkTextOf(const WinPath& path, std::u16string& text, bool& mountPoint);

    FileTree& m_tree;
    WriteBudget& m_budget;
    const std::vector<std::pair<char16_t, std::u16string>> m_volumes;
    HandleTable<OpenFile> m_files;
    HandleTable<OpenFind> m_finds;
    ShareTable m_shares;
    mutable Mutex m_writtenLock;
    std::unordered_set<std::u16string> m_written;  // guarded by m_writtenLock
};

}  // namespace roundup
