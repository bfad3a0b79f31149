#include "msianalyzer/cachefile.h"

#include <bit>
#include <cstring>

#include "platform/machine.h"
#include "utility/sysinfo.h"
#include "utility/textscan.h"
#include "utility/wholefile.h"

namespace roundup {

namespace {

// A machine with a hundred thousand components has a file of 8 MiB.
constexpr std::uint32_t kLargestFile = 256U << 20U;
constexpr std::size_t kLengthOffset = 4;

static_assert(std::endian::native == std::endian::little);

bool WriteWholeFile(IFileSystem& files, const char16_t* path, std::span<const std::byte> bytes) {
    FileHandle file = kInvalidFile;
    if (files.Open(path, kGenericWrite, kShareRead | kShareWrite, kCreateAlways, file) != kErrorSuccess) return false;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    std::uint32_t done = 0;
    const bool written = files.Write(file, bytes.data(), size, done) == kErrorSuccess && done == size;
    files.Close(file);
    // A part of a file would be believed, or refused, by every later process.
    if (!written) (void)files.Delete(path);
    return written;
}

}  // namespace

ResultCode CacheReader::Header(std::uint32_t magic) {
    std::uint32_t found = 0;
    if (const ResultCode rc = Number(found); Failed(rc)) return Pass(rc);
    if (found != magic) return Fail(SmallCode::BadArgument, found);
    if (const ResultCode rc = Number(m_length); Failed(rc)) return Pass(rc);
    if (m_length == 0) return Fail(SmallCode::BadArgument);
    return kSuccess;
}

ResultCode CacheReader::Number(std::uint32_t& number) {
    const std::optional<std::uint32_t> found = m_bytes.At<std::uint32_t>(m_offset);
    if (!found) return Fail(SmallCode::GeneralFailure, m_offset);
    number = *found;
    m_offset += sizeof number;
    return kSuccess;
}

ResultCode CacheReader::Text(TextArena& texts, std::u16string_view& text) {
    std::uint32_t size = 0;
    if (const ResultCode rc = Number(size); Failed(rc)) return Pass(rc);
    if (size == 0) return Fail(SmallCode::BadArgument);
    const std::optional<ByteView> bytes = m_bytes.Slice(m_offset, size);
    if (!bytes) return Fail(SmallCode::GeneralFailure, size);
    const std::size_t length = size / sizeof(char16_t);
    char16_t* const room = texts.Room(length);
    if (room == nullptr) return Fail(SmallCode::ObjectAllocation);
    std::memcpy(room, bytes->Data(), length * sizeof(char16_t));
    text = texts.Keep(UpToZero({room, length}).size());
    m_offset += size;
    return kSuccess;
}

ResultCode CacheReader::End() const {
    return m_offset == m_bytes.Size() ? kSuccess : Fail(SmallCode::GeneralFailure, m_offset);
}

void CacheWriter::Number(std::uint32_t number) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(&number);
    m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof number);
}

void CacheWriter::Text(std::u16string_view text) {
    const std::size_t size = text.size() * sizeof(char16_t);
    Number(static_cast<std::uint32_t>(size + sizeof(char16_t)));
    const auto* const bytes = reinterpret_cast<const std::byte*>(text.data());
    m_bytes.insert(m_bytes.end(), bytes, bytes + size);
    m_bytes.resize(m_bytes.size() + sizeof(char16_t));
}

ResultCode CacheWriter::Finish(std::span<const std::byte>& bytes) {
    if (m_bytes.size() > UINT32_MAX) return Fail(SmallCode::GeneralFailure, m_bytes.size());
    const auto length = static_cast<std::uint32_t>(m_bytes.size());
    std::memcpy(m_bytes.data() + kLengthOffset, &length, sizeof length);
    bytes = m_bytes;
    return kSuccess;
}

ResultCode CacheFilePath(std::u16string_view name, std::u16string& path) {
    FixedText<260> folder;
    if (!GetCacheFolder(folder)) return Fail(SmallCode::GeneralFailure);
    path.assign(folder.View()).append(u"\\").append(name);
    return kSuccess;
}

ResultCode ReadCacheFile(const char16_t* path, ILock& lock, std::vector<std::byte>& bytes) {
    const LockGuard guard(lock);
    return ReadWholeFile(path, kLargestFile, bytes) ? kSuccess : Fail(SmallCode::GeneralFailure);
}

ResultCode WriteCacheFile(const char16_t* path, ILock& lock, std::span<const std::byte> bytes) {
    const LockGuard guard(lock);
    return WriteWholeFile(CurrentMachine().Files(), path, bytes) ? kSuccess : Fail(SmallCode::GeneralFailure);
}

}  // namespace roundup
