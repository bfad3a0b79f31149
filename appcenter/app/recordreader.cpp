#include "appcenter/app/recordreader.h"

#include <cstring>

namespace roundup {

bool RecordReader::EndAt(std::size_t size) noexcept {
    const auto narrowed = m_block.Slice(0, size);
    if (!narrowed || size < m_position) return false;
    m_block = *narrowed;
    return true;
}

bool RecordReader::SkipWord(std::uint32_t word) noexcept {
    if (m_block.At<std::uint32_t>(m_position) != word) return false;
    m_position += sizeof word;
    return true;
}

ResultCode RecordReader::ReadBytes(std::size_t size, std::span<const std::byte>& bytes) noexcept {
    const auto next = m_block.Slice(m_position, size);
    if (!next) return Fail(m_pastEnd, Left());
    bytes = next->Bytes();
    m_position += size;
    return kSuccess;
}

ResultCode RecordReader::ReadText(OwnedString& text, bool needed) noexcept {
    std::uint32_t size = 0;
    if (auto rc = Read(size); Failed(rc)) return PassQuiet(rc);
    if (size == 0 && needed) return Fail(SmallCode::BadArgument);
    if (size == 0) return kSuccess;
    std::span<const std::byte> bytes;
    if (auto rc = ReadBytes(size, bytes); Failed(rc)) return PassQuiet(rc);
    if (size % sizeof(char16_t) != 0) return Fail(SmallCode::BadArgument, size);
    const std::size_t length = size / sizeof(char16_t) - 1;
    if (bytes[size - 1] != std::byte{0} || bytes[size - 2] != std::byte{0}) return Fail(SmallCode::BadArgument, size);
    if (!text.Allocate(length)) return Fail(SmallCode::ObjectAllocation, size);
    std::memcpy(text.Data(), bytes.data(), length * sizeof(char16_t));
    // A stored text may have a zero inside, where the platform would take it for ended.
    text.Measure();
    return kSuccess;
}

}  // namespace roundup
