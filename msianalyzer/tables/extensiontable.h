// Table "Extension": file extensions.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CExtensionTableRow final : public CTableRow {
  public:
    std::u16string_view extension;
    std::u16string_view component;
    std::u16string_view progId;
    std::u16string_view mime;
    std::u16string_view feature;
};

// Rows by extension and by component.
class CExtensionTableAnalyzer final : public CTableAnalyzer {
  public:
    CExtensionTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
