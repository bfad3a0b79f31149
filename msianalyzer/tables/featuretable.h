// Table "Feature": the features of the product.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CFeatureTableRow final : public CTableRow {
  public:
    std::u16string_view feature;
};

// Rows by name.
class CFeatureTableAnalyzer final : public CTableAnalyzer {
  public:
    CFeatureTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
