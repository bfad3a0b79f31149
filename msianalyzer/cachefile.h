// Binary files of the cache folder that keep what is slow to find out: magic, length of the whole file, then numbers
// and texts. Numbers are little-endian and have 32 bits; a text is its length in bytes with the terminator, which is
// never 0, and the text with its terminator. Nothing is aligned.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "utility/byteview.h"
#include "utility/locks.h"
#include "utility/result.h"
#include "utility/textarena.h"

namespace roundup {

inline constexpr std::uint32_t kComponentsMagic = 0x00606001;  // installed components
inline constexpr std::uint32_t kReferrersMagic = 0x00606002;   // what points at type libraries

// Reads such a file from memory. A field that runs past the end of the bytes is small code 1.
class CacheReader {
  public:
    explicit CacheReader(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

    // Small code 2 for another magic or a length of 0. More() asks that length, which may lie, from then on.
    ResultCode Header(std::uint32_t magic);
    ResultCode Number(std::uint32_t& number);
    // The text up to its first zero goes into the arena. Small code 2 for a length of 0, 0xA when memory is short.
    ResultCode Text(TextArena& texts, std::u16string_view& text);
    bool More() const noexcept { return m_offset < m_length; }
    // Small code 1 when the file does not end here.
    ResultCode End() const;

  private:
    ByteView m_bytes;
    std::uint64_t m_offset = 0;
    std::uint32_t m_length = 0;  // as the file has it
};

// Builds such a file in memory. Throws std::bad_alloc for want of memory.
class CacheWriter {
  public:
    explicit CacheWriter(std::uint32_t magic) { Number(magic), Number(0); }
    void Number(std::uint32_t number);
    void Text(std::u16string_view text);
    // Sets the length. Small code 1 when 32 bits do not hold it.
    ResultCode Finish(std::span<const std::byte>& bytes);

  private:
    std::vector<std::byte> m_bytes;
};

// The path of a file of that name in the cache folder; small code 1 when the host's folder is not known.
ResultCode CacheFilePath(std::u16string_view name, std::u16string& path);

// Whole files, read and written while the lock is held. Small code 1 for a file that cannot be had, or above 256 MiB.
// One that could not be written to its end is deleted again.
ResultCode ReadCacheFile(const char16_t* path, ILock& lock, std::vector<std::byte>& bytes);
ResultCode WriteCacheFile(const char16_t* path, ILock& lock, std::span<const std::byte> bytes);

}  // namespace roundup
