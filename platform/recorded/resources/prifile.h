// Indexes of package resources, "resources.pri", as far as texts are found by their names in them.
//
// The maker does not describe the format; public descriptions by its users tell of a header, a table of sections and,
// among the sections, the schema (names), the decision info (qualifiers such as languages), the resource maps (which
// item has which candidates) and the data items (bytes of candidates).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "utility/byteview.h"

namespace roundup {

// Shows bytes that must outlive it. Each field is checked where it is used, and no file makes a question cost more than
// a walk over its tables. One thread.
class PriFile {
  public:
    // Files of more bytes are none.
    static constexpr std::uint32_t kLargestFile = 32U << 20U;

    // False when the header, the table of sections or the section that names the others is broken.
    bool Open(ByteView bytes);

    // The text of an item, such as "Resources/AppName", ignoring case. Of several candidates the one for the language
    // is taken, then one of the same primary language, then one for none, then the one that the package falls back to;
    // one that lies in another file is passed over. Nothing for an item that is not there, or has no text. Throws
    // std::bad_alloc.
    std::optional<std::u16string> FindText(std::u16string_view path, std::u16string_view language) const;

  private:
    struct Entry {
        std::string_view name;
        ByteView content;  // without the section's own header and footer
    };

    std::optional<Entry> Section(std::uint32_t index) const;
    std::optional<ByteView> Section(std::uint32_t index, std::string_view name) const;
    std::optional<std::u16string> FindInMap(std::uint32_t section, std::u16string_view path,
                                            std::u16string_view language) const;
    std::optional<ByteView> DataItem(std::uint32_t section, std::uint32_t index) const;

    ByteView m_bytes;
    std::uint32_t m_sectionTable = 0;
    std::uint32_t m_sectionStart = 0;
    std::uint32_t m_sections = 0;
    std::vector<std::uint16_t> m_maps;  // sections; the package's own first
};

}  // namespace roundup
