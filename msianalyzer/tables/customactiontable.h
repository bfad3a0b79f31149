// Table "CustomAction": actions that the package brings along.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CCustomActionTableRow final : public CTableRow {
  public:
    std::u16string_view action;
    std::int32_t type = kNullInteger;
    std::u16string_view source;
    std::u16string_view target;
};

// Rows by action.
class CCustomActionTableAnalyzer final : public CTableAnalyzer {
  public:
    CCustomActionTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
