// Table "AppId": COM applications.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CAppIdTableRow final : public CTableRow {
  public:
    std::u16string_view appId;
    std::u16string_view remoteServerName;
    std::u16string_view localService;
    std::u16string_view serviceParameters;
    std::u16string_view dllSurrogate;
    std::int32_t activateAtStorage = kNullInteger;
    std::int32_t runAsInteractiveUser = kNullInteger;
};

// Rows by application identifier.
class CAppIdTableAnalyzer final : public CTableAnalyzer {
  public:
    CAppIdTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
