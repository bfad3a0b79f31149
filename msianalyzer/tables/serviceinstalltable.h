// Table "ServiceInstall": services.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CServiceInstallTableRow final : public CTableRow {
  public:
    std::u16string_view serviceInstall;
    std::u16string_view name;
    std::u16string_view displayName;
    std::int32_t serviceType = kNullInteger;
    std::int32_t startType = kNullInteger;
    std::int32_t errorControl = kNullInteger;
    std::u16string_view loadOrderGroup;
    std::u16string_view dependencies;
    std::u16string_view startName;
    std::u16string_view password;
    std::u16string_view arguments;
    std::u16string_view component;
    std::u16string_view description;
};

// Rows by key and by component.
class CServiceInstallTableAnalyzer final : public CTableAnalyzer {
  public:
    CServiceInstallTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
