// The resources of a program file (PE/COFF). Format: "PE Format" of the Windows documentation, section ".rsrc".
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/recorded/icons/filebytes.h"
#include "utility/byteview.h"

namespace roundup {

inline constexpr std::uint32_t kResourceIcon = 3;        // RT_ICON
inline constexpr std::uint32_t kResourceGroupIcon = 14;  // RT_GROUP_ICON

class PeResources {
  public:
    // Reads the headers and the section that holds the resource directory. Empty for a file that is none, or whose
    // directory cannot be had.
    static std::optional<PeResources> Open(const FileBytes& file);

    // The resource of a type that stands at a place in the directory's order, or that has a number; in the first of
    // its languages. False when there is none, or its bytes do not lie in the file. The file must be that of Open.
    bool ReadByPlace(const FileBytes& file, std::uint32_t type, std::uint32_t place,
                     std::vector<std::byte>& bytes) const;
    bool ReadByNumber(const FileBytes& file, std::uint32_t type, std::uint32_t number,
                      std::vector<std::byte>& bytes) const;

  private:
    struct Section {
        std::uint32_t address = 0;  // relative to the image
        std::uint32_t size = 0;     // bytes in the file
        std::uint32_t offset = 0;   // in the file
    };
    struct Entry {
        std::uint32_t name;
        std::uint32_t target;
    };

    ByteView Directory() const noexcept { return ByteView(m_directory); }
    std::uint32_t CountEntries(std::uint32_t table) const noexcept;
    std::optional<Entry> EntryAt(std::uint32_t table, std::uint32_t place) const noexcept;
    std::optional<std::uint32_t> FindTable(std::uint32_t table, std::uint32_t number) const noexcept;
    bool ReadFirstLanguage(const FileBytes& file, std::uint32_t table, std::vector<std::byte>& bytes) const;
    std::optional<std::uint64_t> FileOffset(std::uint32_t address, std::uint32_t size) const noexcept;

    std::vector<Section> m_sections;
    std::vector<std::byte> m_directory;  // from the directory's root on
};

}  // namespace roundup
