// Table "IniFile": entries of ini files.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CIniFileTableRow final : public CTableRow {
  public:
    std::u16string_view fileName;
    std::u16string_view dirProperty;
    std::u16string_view section;
    std::u16string_view key;
    std::u16string_view value;
    std::int32_t action = kNullInteger;
};

// Rows by key and by component.
class CIniFileTableAnalyzer final : public CTableAnalyzer {
  public:
    CIniFileTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
