#include "msianalyzer/tables/progidtable.h"

#include <utility>

namespace roundup {

CProgIdTableAnalyzer::CProgIdTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `ProgId`, `ProgId_Parent`, `Class_`, `Description`, `Icon_`, `IconIndex` FROM "
          u"`ProgId`") {}

ResultCode CProgIdTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CProgIdTableRow> row = MakeRow<CProgIdTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->progId)
        .Text(row->progIdParent)
        .Text(row->classId)
        .Text(row->description)
        .Text(row->icon)
        .Integer(row->iconIndex);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->progId;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
