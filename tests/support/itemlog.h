// What an analysis of a package reports, as lines of text that tests compare.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "utility/result.h"

namespace roundup {

// One line for each file, folder and record, in the order of the reports; UTF-8:
//
//     file C:\Tool\tool.exe 12
//     folder C:\Tool\ 0
//     4 HKLM|SOFTWARE\Tool|Path|1|C:\Tool|0      a record: its fields, texts of type 1 as text, other bytes as digits
//     4 end                                      behind the last record of a data file; "broken" for anything else
//
// Data files are deleted, as their receiver does. A root that is an open handle reads as "open".
class ItemLog {
  public:
    static ResultCode OnItem(void* log, const char16_t* item, std::uint64_t value, std::uint32_t type);

    std::vector<std::string> lines;

  private:
    void AddRecords(const std::string& bytes, std::uint32_t type);
};

}  // namespace roundup
