// Table "TypeLib": type libraries.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CTypeLibTableRow final : public CTableRow {
  public:
    std::u16string_view libId;
    std::int32_t language = kNullInteger;
    std::u16string_view component;
    std::int32_t version = kNullInteger;
    std::u16string_view description;
    std::u16string_view directory;
    std::u16string_view feature;
    std::int32_t cost = kNullInteger;
};

// Rows by library identifier and by component.
class CTypeLibTableAnalyzer final : public CTableAnalyzer {
  public:
    CTypeLibTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
