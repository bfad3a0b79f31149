// Table "FeatureComponents": which components a feature has.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CFeatureComponentsTableRow final : public CTableRow {
  public:
    std::u16string_view feature;
    std::u16string_view component;
};

// Rows by feature.
class CFeatureComponentsTableAnalyzer final : public CTableAnalyzer {
  public:
    CFeatureComponentsTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
