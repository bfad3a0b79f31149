// The lines of a rule file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "utility/result.h"

namespace roundup {

// A text of UTF-16, little-endian, behind its mark 0xFF 0xFE. Used by one thread.
class CReadConfig {
  public:
    CReadConfig() = default;
    CReadConfig(const CReadConfig&) = delete;
    CReadConfig& operator=(const CReadConfig&) = delete;
    virtual ~CReadConfig() = default;

    // Reads the whole file. Small code 2 for an empty path, 3 for a file below 3 bytes, above 4 MiB or without the
    // mark, 4 for one that cannot be opened, 5 without a file object, 6 for a short read.
    ResultCode Open(const char16_t* path);
    // The next line without its end, good until the next Open. A line of more than 4,095 characters reads as an empty
    // one: no rule is followed by half. Small code 8 behind the last line, which is not logged.
    ResultCode ReadLine(std::u16string_view& line);

  private:
    std::u16string m_text;
    std::size_t m_position = 0;
};

}  // namespace roundup
