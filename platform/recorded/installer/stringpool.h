// The texts of an installer database: every text of every table, each once, under a number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/recorded/installer/codepage.h"
#include "platform/recorded/installer/compoundfile.h"

namespace roundup {

// Two streams make it: "_StringData" has the texts one behind the other in the database's code page, "_StringPool" the
// code page and the lengths. Described by the free readers of the format. Every thread may call.
class StringPool {
  public:
    // False for a file without the two, with a code page that nobody here reads, or with lengths beyond the data: with
    // these every text behind would be another. Throws std::bad_alloc.
    bool Read(CompoundFile& file);

    // Bytes that a table takes to name a text.
    std::uint32_t ReferenceSize() const noexcept { return m_referenceSize; }
    // Empty for 0, which is null, and for a number that has no text.
    std::string_view At(std::uint32_t number) const noexcept {
        if (number == 0 || number >= m_ends.size()) return {};
        const std::uint32_t start = m_ends[number - 1];
        return {reinterpret_cast<const char*>(m_data.get()) + start, m_ends[number] - start};
    }
    bool IsText(std::uint32_t number, std::u16string_view text) const;
    const CodePage& Page() const noexcept { return *m_page; }

  private:
    // How a text of more than 65535 bytes is told.
    enum class LongForm { HighFirst, HighLast };
    // How the lengths agree with the data.
    enum class Fit { Exact, Within, Beyond };
    Fit ReadLengths(std::span<const std::byte> pool, LongForm form);

    std::uint32_t m_referenceSize = 2;
    std::unique_ptr<CodePage> m_page;
    std::unique_ptr<std::byte[]> m_data;
    std::size_t m_dataSize = 0;
    std::vector<std::uint32_t> m_ends;  // of each text, in bytes from the start of the data; at 0 is 0
};

}  // namespace roundup
