// Table "Directory": the tree of folders.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CDirectoryTableRow final : public CTableRow {
  public:
    std::u16string_view directoryParent;
    std::u16string_view defaultDir;
};

// Rows by key.
class CDirectoryTableAnalyzer final : public CTableAnalyzer {
  public:
    CDirectoryTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
