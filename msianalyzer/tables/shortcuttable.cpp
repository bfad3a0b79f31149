#include "msianalyzer/tables/shortcuttable.h"

#include <utility>

namespace roundup {

CShortcutTableAnalyzer::CShortcutTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `Shortcut`, `Directory_`, `Name`, `Component_`, `Target`, `Arguments`, "
          u"`Description`, `Hotkey`, `Icon_`, `IconIndex`, `ShowCmd`, `WkDir` FROM `Shortcut`") {}

ResultCode CShortcutTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CShortcutTableRow> row = MakeRow<CShortcutTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->shortcut)
        .Text(row->directory)
        .Text(row->name)
        .Text(row->component)
        .Text(row->target)
        .Text(row->arguments)
        .Text(row->description)
        .Integer(row->hotkey)
        .Text(row->icon)
        .Integer(row->iconIndex)
        .Integer(row->showCmd)
        .Text(row->wkDir);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CShortcutTableRow* added = row.get();
    AddRow(added->shortcut, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
