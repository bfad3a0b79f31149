// Table "MsiAssemblyName": the parts of the names of assemblies.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CMsiAssemblyNameTableRow final : public CTableRow {
  public:
    std::u16string_view name;
    std::u16string_view value;
};

// Rows by component alone: there is no primary key.
class CMsiAssemblyNameTableAnalyzer final : public CTableAnalyzer {
  public:
    CMsiAssemblyNameTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
