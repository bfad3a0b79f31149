#include "appcenter/app/recordreader.h"

namespace roundup {

bool RecordReader::EndAt(std::size_t size) noexcept {
    if (size > m_block.size() || size < m_position) return false;
    m_block = m_block.first(size);
    return true;
}

bool RecordReader::SkipWord(std::uint32_t word) noexcept {
    std::uint32_t next = 0;
    if (Left() < sizeof next) return false;
    std::memcpy(&next, m_block.data() + m_position, sizeof next);
    if (next != word) return false;
    m_position += sizeof next;
    return true;
}

ResultCode RecordReader::ReadBytes(std::size_t size, std::span<const std::byte>& bytes) noexcept {
    if (Left() < size) return Fail(SmallCode::BadArgument, Left());
    bytes = m_block.subspan(m_position, size);
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
    return kSuccess;
}

}  // namespace roundup
