// Lines of a text file of unknown making, in a buffer of fixed size.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/filesystem.h"
#include "utility/result.h"

namespace roundup {

// Reads as the C library's text mode does, bytes as they stand: a line end is "\n" or "\r\n", byte 26 ends the file,
// and a line of more than 1023 bytes comes in pieces. Costs no allocation, however long the lines. One thread.
class LineReader {
  public:
    LineReader() noexcept = default;
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Small code 1, logged, for a file that cannot be opened, and for a path of more than 519 bytes in UTF-8.
    ResultCode Open(const char16_t* path);
    // The next line or piece of one, with its line end, up to its first zero byte; good until the next call. False at
    // the end: a last line without a line end is left out, and a failing read is an end.
    bool Next(std::string_view& line);

  private:
    static constexpr std::size_t kLine = 1024;  // bytes, with the zero that the C library adds

    // -1 at the end.
    int TakeByte();
    // Byte behind the last one taken, which stays; -1 at the end.
    int PeekByte();
    bool Fill();

    FileHandle m_file = kInvalidFile;
    bool m_end = false;
    std::uint32_t m_next = 0;
    std::uint32_t m_filled = 0;
    char m_line[kLine];
    char m_bytes[8192];
};

}  // namespace roundup
