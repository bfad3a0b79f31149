// A real folder of this computer shown inside of a machine: the temporary folder and the host folder. It is read and
// written as it stands, nothing of it is kept in memory.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/filesystem.h"
#include "platform/recorded/hostfs.h"

namespace roundup {

class WriteBudget;

// Paths are parts joined by backslashes, "" for the folder itself; they ignore case: a name that is met exactly counts
// first, else the first in byte order. Links are followed as long as they stay inside. Every thread may call.
class MappedFolder {
  public:
    struct Item {
        std::u16string name;
        FileInfo info;
    };

    MappedFolder(std::unique_ptr<HostFolder> folder, WriteBudget& budget);

    Win32Error Describe(std::u16string_view path, FileInfo& info);
    // In ascending order of upper-cased names.
    Win32Error List(std::u16string_view path, std::vector<Item>& items);
    // disposition as in CreateFileW.
    Win32Error Open(std::u16string_view path, bool write, std::uint32_t disposition,
                    std::unique_ptr<IFileStream>& stream);
    Win32Error Delete(std::u16string_view path);
    Win32Error CreateFolder(std::u16string_view path);
    // The path with every name as it is on disk.
    Win32Error RealNames(std::u16string_view path, std::u16string& names);
    // As of HostFolder.
    void LockWriters() { m_folder->LockWriters(); }
    void UnlockWriters() { m_folder->UnlockWriters(); }
    // The text of the link at the path; error 4390 when it is none.
    Win32Error ReadLinkText(std::u16string_view path, std::u16string& text);

  private:
    struct Found {
        Win32Error error = kErrorSuccess;
        std::string path;  // with error 2: where it would be made
        std::u16string names;
        SourceKind kind = SourceKind::Folder;
        std::uint64_t size = 0;
    };

    Found Find(std::u16string_view path, bool followLast);
    Win32Error FindPart(const std::string& folder, std::u16string_view part, std::string& name, Found& found);
    Win32Error Follow(std::string& path, int& hops, Found& found);
    FileInfo InfoOf(const std::string& path, SourceKind kind, std::uint64_t size);

    const std::unique_ptr<HostFolder> m_folder;
    WriteBudget& m_budget;
};

}  // namespace roundup
