// Table "Component": the components of the product.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CComponentTableRow final : public CTableRow {
  public:
    std::u16string_view component;
    std::u16string_view componentId;
    std::u16string_view directory;
    std::int32_t attributes = kNullInteger;
    std::u16string_view keyPath;
};

// Rows by key.
class CComponentTableAnalyzer final : public CTableAnalyzer {
  public:
    CComponentTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
