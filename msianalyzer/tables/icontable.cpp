#include "msianalyzer/tables/icontable.h"

#include <utility>

namespace roundup {

CIconTableAnalyzer::CIconTableAnalyzer() : CTableAnalyzer(u"SELECT `Name`, `Data` FROM `Icon`") {}

ResultCode CIconTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CIconTableRow> row = MakeRow<CIconTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->name).Stream(row->data, row->dataSize);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->name;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
