// Table "Shortcut": shortcuts.
#pragma once

#include "msianalyzer/tableanalyzer.h"

namespace roundup {

class CShortcutTableRow final : public CTableRow {
  public:
    std::u16string_view shortcut;
    std::u16string_view directory;
    std::u16string_view name;
    std::u16string_view component;
    std::u16string_view target;
    std::u16string_view arguments;
    std::u16string_view description;
    std::int32_t hotkey = kNullInteger;
    std::u16string_view icon;
    std::int32_t iconIndex = kNullInteger;
    std::int32_t showCmd = kNullInteger;
    std::u16string_view wkDir;
};

// Rows by key and by component.
class CShortcutTableAnalyzer final : public CTableAnalyzer {
  public:
    CShortcutTableAnalyzer();

  protected:
    ResultCode ReadRecord(RecordColumns& columns) override;
};

}  // namespace roundup
