// What a source lists of one folder, in the order of Windows and with an index by folded name.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/foldernode.h"

namespace roundup {

// Constant once made, apart from what an entry fills in at first use.
class FolderNode::Listing {
  public:
    // Entries that differ only in case: the first in code point order stands, the others cannot be reached. Names
    // that no file of Windows can have are left out.
    Listing(FolderNode& folder, std::vector<SourceEntry> source, Win32Error error);

    FileEntry* Find(std::u16string_view name) const noexcept;
    std::span<FileEntry> Entries() const noexcept { return {m_entries.get(), m_count}; }
    // What kept the source from listing the folder.
    Win32Error Error() const noexcept { return m_error; }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t index = 0;  // counted from 1; 0: the slot is empty
    };

    void Fill(FolderNode& folder, const std::vector<SourceEntry>& source);
    void Index();

    std::u16string m_names;  // all of them, one behind the other
    std::unique_ptr<FileEntry[]> m_entries;
    std::size_t m_count = 0;
    std::vector<Slot> m_slots;  // a power of two, at most half of them filled, probed in a row;
                                // none for few entries
    Win32Error m_error;
};

}  // namespace roundup
