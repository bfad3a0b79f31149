// Table "Class": COM classes.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CClassTableRow final : public CTableRow {
  public:
    std::u16string_view clsid;
    std::u16string_view context;
    std::u16string_view component;
    std::u16string_view progIdDefault;
    std::u16string_view description;
    std::u16string_view appId;
    std::u16string_view fileTypeMask;
    std::u16string_view icon;
    std::int32_t iconIndex = kNullInteger;
    std::u16string_view defInprocHandler;
    std::u16string_view argument;
    std::u16string_view feature;
    std::int32_t attributes = kNullInteger;
};

// Rows by class identifier, of which several may be the same, and by component.
class CClassTableAnalyzer final : public CTableAnalyzer {
  public:
    CClassTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
