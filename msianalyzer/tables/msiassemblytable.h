// Table "MsiAssembly": components that are assemblies.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CMsiAssemblyTableRow final : public CTableRow {
  public:
    std::u16string_view component;
    std::int32_t attributes = kNullInteger;
};

// Rows by component, in both indexes.
class CMsiAssemblyTableAnalyzer final : public CTableAnalyzer {
  public:
    CMsiAssemblyTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
