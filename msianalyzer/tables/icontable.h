// Table "Icon": icons, as icon files or in executable images.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CIconTableRow final : public CTableRow {
  public:
    std::u16string_view name;
    std::unique_ptr<std::byte[]> data;
    std::uint32_t dataSize = 0;  // bytes, never 0
};

// Rows by name.
class CIconTableAnalyzer final : public CTableAnalyzer {
  public:
    CIconTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
