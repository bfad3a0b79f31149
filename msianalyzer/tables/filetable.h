// Table "File": the files of the package.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CFileTableRow final : public CTableRow {
  public:
    std::u16string_view component;
    std::u16string_view fileName;
    std::int64_t fileSize = 0;  // bytes
    std::uint32_t attributes = 0;
};

// Rows by key, by component, and by long name as third index.
class CFileTableAnalyzer final : public CTableAnalyzer {
  public:
    CFileTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
