#include "msianalyzer/tables/customactiontable.h"

#include <utility>

namespace roundup {

CCustomActionTableAnalyzer::CCustomActionTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Action`, `Type`, `Source`, `Target` FROM `CustomAction`") {}

ResultCode CCustomActionTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CCustomActionTableRow> row = MakeRow<CCustomActionTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->action).Integer(row->type).Text(row->source).Text(row->target);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->action;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
