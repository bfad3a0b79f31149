// Reading the stored form of an application, which may be broken or hostile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "utility/byteview.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

// Takes one field after the other from a block of little-endian bytes without padding. A fault of the record is
// BadArgument; a field that runs past the end is what the maker of the reader says, which is the same for most.
class RecordReader {
  public:
    explicit RecordReader(std::span<const std::byte> block, SmallCode pastEnd = SmallCode::BadArgument) noexcept
        : m_pastEnd(pastEnd), m_block(block) {}

    std::size_t Position() const noexcept { return m_position; }
    std::size_t Left() const noexcept { return m_block.Size() - m_position; }
    std::span<const std::byte> Rest() const noexcept { return m_block.Bytes().subspan(m_position); }

    // Narrows the block to its first size bytes; false when it has fewer or more than size were read already.
    [[nodiscard]] bool EndAt(std::size_t size) noexcept;

    template <class Number>
    [[nodiscard]] ResultCode Read(Number& number) noexcept {
        const auto next = m_block.At<Number>(m_position);
        if (!next) return Fail(m_pastEnd, Left());
        number = *next;
        m_position += sizeof number;
        return kSuccess;
    }
    // True, and the word consumed, when the next 32-bit word is there and is that one.
    [[nodiscard]] bool SkipWord(std::uint32_t word) noexcept;
    // The next size bytes, as they stand in the block.
    [[nodiscard]] ResultCode ReadBytes(std::size_t size, std::span<const std::byte>& bytes) noexcept;
    // A byte count and a text with its terminator. A count of 0 leaves text null, or fails when one is needed. A text
    // that memory is short for is ObjectAllocation.
    [[nodiscard]] ResultCode ReadText(OwnedString& text, bool needed) noexcept;

  private:
    SmallCode m_pastEnd;
    ByteView m_block;
    std::size_t m_position = 0;
};

}  // namespace roundup
