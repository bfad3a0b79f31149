#include "msianalyzer/tables/classtable.h"

#include <utility>

namespace roundup {

CClassTableAnalyzer::CClassTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `CLSID`, `Context`, `Component_`, `ProgId_Default`, `Description`, `AppId_`, "
          u"`FileTypeMask`, `Icon_`, `IconIndex`, `DefInprocHandler`, `Argument`, `Feature_`, "
          u"`Attributes` FROM `Class`") {}

ResultCode CClassTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CClassTableRow> row = MakeRow<CClassTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->clsid)
        .Text(row->context)
        .Text(row->component)
        .Text(row->progIdDefault)
        .Text(row->description)
        .Text(row->appId)
        .Text(row->fileTypeMask)
        .Text(row->icon)
        .Integer(row->iconIndex)
        .Text(row->defInprocHandler)
        .Text(row->argument)
        .Text(row->feature)
        .Integer(row->attributes);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CClassTableRow* added = row.get();
    AddRow(added->clsid, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
