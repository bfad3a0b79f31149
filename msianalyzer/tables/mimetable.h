// Table "MIME": content types and the extensions that stand for them.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CMIMETableRow final : public CTableRow {
  public:
    std::u16string_view contentType;
    std::u16string_view extension;
    std::u16string_view clsid;
};

// Rows by content type.
class CMIMETableAnalyzer final : public CTableAnalyzer {
  public:
    CMIMETableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
