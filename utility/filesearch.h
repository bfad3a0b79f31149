// A walk over the entries of a folder.
#pragma once

#include <string_view>

#include "platform/filesystem.h"

namespace roundup {

// Finds what a pattern matches, in the order of the file system, without "." and "..". Used by one thread at a time.
//
//     for (FileSearch search(u"C:\\Tool\\*"); search.Next();) Use(search.Entry());
class FileSearch {
  public:
    // pattern is zero-terminated; its last part may hold "*" and "?".
    explicit FileSearch(const char16_t* pattern);
    ~FileSearch();
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;

    // What the first question answered: 0 when something was found, "." and ".." included; 2 when nothing was, 3 when
    // the folder is absent, 5 when it may not be read.
    Win32Error Error() const noexcept { return m_error; }
    // Moves to the first entry, then to the next; false at the end.
    bool Next();
    // The entry that Next moved to.
    const FindData& Entry() const noexcept { return m_entry; }
    std::u16string_view Name() const noexcept { return m_entry.name; }
    bool IsFolder() const noexcept { return (m_entry.attributes & kAttributeDirectory) != 0; }
    // A folder that leads elsewhere, such as a junction.
    bool IsReparseFolder() const noexcept { return IsFolder() && (m_entry.attributes & kAttributeReparsePoint) != 0; }

  private:
    IFileSystem& m_files;
    FindHandle m_find = 0;
    FindData m_entry;
    Win32Error m_error;
    bool m_pending;  // the entry that the first question brought has not been handed out
};

}  // namespace roundup
