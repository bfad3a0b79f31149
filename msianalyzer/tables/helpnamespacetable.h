// Table "HelpNamespace": collections of help files.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CHelpNamespaceTableRow final : public CTableRow {
  public:
    std::u16string_view namespaceName;
    std::u16string_view fileCollection;
    std::u16string_view description;
};

// Rows by key.
class CHelpNamespaceTableAnalyzer final : public CTableAnalyzer {
  public:
    CHelpNamespaceTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
