// Table "SelfReg": files that register themselves.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CSelfRegTableRow final : public CTableRow {
  public:
    std::u16string_view file;
    std::int32_t cost = kNullInteger;
};

// Rows by file.
class CSelfRegTableAnalyzer final : public CTableAnalyzer {
  public:
    CSelfRegTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
