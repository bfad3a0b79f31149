// Table "Property": the properties of the product.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CPropertyTableRow final : public CTableRow {
  public:
    std::u16string_view property;
    std::u16string_view value;
};

// Rows by name. The one table that can be restricted to some keys.
class CPropertyTableAnalyzer final : public CTableAnalyzer {
  public:
    CPropertyTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
