// What a source lists of one folder, in the order of Windows and with an index by folded name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/recorded/fileentry.h"

namespace roundup {

// Constant once made, apart from what an entry fills in at first use. Lives at the end of a block with room behind it,
// where its entries, its index and all names stand one behind the other: a lookup that walks through many folders
// meets each of them in one place.
class FolderListing {
  public:
    // What the listing is to show of what the source has, in order. Entries that differ only in case: the first in
    // code point order stands, the others cannot be reached. Names that no file of Windows can have are left out.
    static void Prepare(std::vector<SourceEntry>& source);
    // The room needed behind the listing for what Prepare left.
    static std::size_t RoomFor(const std::vector<SourceEntry>& source) noexcept;

    // room is aligned as an entry is.
    FolderListing(FolderNode& folder, std::byte* room, const std::vector<SourceEntry>& source,
                  Win32Error error) noexcept;
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;
    ~FolderListing() { std::destroy_n(m_entries, m_count); }

    FileEntry* Find(std::u16string_view name) const noexcept;
    std::span<FileEntry> Entries() const noexcept { return {m_entries, m_count}; }
    // What kept the source from listing the folder.
    Win32Error Error() const noexcept { return m_error; }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t index = 0;  // counted from 1; 0: the slot is empty
    };

    static std::size_t SlotsFor(std::size_t count) noexcept;
    void AddEntry(FolderNode& folder, const SourceEntry& source, char16_t*& names) noexcept;
    void Index() noexcept;

    FileEntry* const m_entries;
    Slot* const m_slots;  // a power of two, at most half of them filled, probed in a row; none for few entries
    const std::uint32_t m_slotCount;
    std::uint32_t m_count = 0;
    const Win32Error m_error;
};

}  // namespace roundup
