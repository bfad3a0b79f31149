#include "msianalyzer/tables/selfregtable.h"

#include <utility>

namespace roundup {

CSelfRegTableAnalyzer::CSelfRegTableAnalyzer() : CTableAnalyzer(u"SELECT `File_`, `Cost` FROM `SelfReg`") {}

ResultCode CSelfRegTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CSelfRegTableRow> row = MakeRow<CSelfRegTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->file).Integer(row->cost);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->file;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
