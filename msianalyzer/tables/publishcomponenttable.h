// Table "PublishComponent": components that other products may ask for.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CPublishComponentTableRow final : public CTableRow {
  public:
    std::u16string_view componentId;
};

// Rows by component identifier.
class CPublishComponentTableAnalyzer final : public CTableAnalyzer {
  public:
    CPublishComponentTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
