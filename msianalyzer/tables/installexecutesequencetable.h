// Table "InstallExecuteSequence": the actions of an installation and their order.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CInstallExecuteSequenceTableRow final : public CTableRow {
  public:
    std::u16string_view action;
    std::u16string_view condition;
    std::int32_t sequence = kNullInteger;
};

// Rows by action.
class CInstallExecuteSequenceTableAnalyzer final : public CTableAnalyzer {
  public:
    CInstallExecuteSequenceTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
