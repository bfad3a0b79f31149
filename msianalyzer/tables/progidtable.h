// Table "ProgId": names of COM classes.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CProgIdTableRow final : public CTableRow {
  public:
    std::u16string_view progId;
    std::u16string_view progIdParent;
    std::u16string_view classId;
    std::u16string_view description;
    std::u16string_view icon;
    std::int32_t iconIndex = kNullInteger;
};

// Rows by name.
class CProgIdTableAnalyzer final : public CTableAnalyzer {
  public:
    CProgIdTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
