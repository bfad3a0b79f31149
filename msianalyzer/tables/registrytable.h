// Tables "Registry" and "Registry2": registry values.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CRegistryTableRow final : public CTableRow {
  public:
    std::int32_t root = kNullInteger;
    std::u16string_view key;
    std::u16string_view name;
    std::u16string_view value;
};

// Rows by key and by component.
class CRegistryTableAnalyzer final : public CTableAnalyzer {
  public:
    // number 1 is "Registry", any other "Registry2".
    explicit CRegistryTableAnalyzer(int number);

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
