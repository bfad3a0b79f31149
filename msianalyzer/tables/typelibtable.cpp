#include "msianalyzer/tables/typelibtable.h"

#include <utility>

namespace roundup {

CTypeLibTableAnalyzer::CTypeLibTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `LibID`, `Language`, `Component_`, `Version`, `Description`, `Directory_`, "
          u"`Feature_`, `Cost` FROM `TypeLib`") {}

ResultCode CTypeLibTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CTypeLibTableRow> row = MakeRow<CTypeLibTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->libId)
        .Integer(row->language)
        .Text(row->component)
        .Integer(row->version)
        .Text(row->description)
        .Text(row->directory)
        .Text(row->feature)
        .Integer(row->cost);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CTypeLibTableRow* added = row.get();
    AddRow(added->libId, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
