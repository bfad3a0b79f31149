#include "msianalyzer/tables/extensiontable.h"

#include <utility>

namespace roundup {

CExtensionTableAnalyzer::CExtensionTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Extension`, `Component_`, `ProgId_`, `MIME_`, `Feature_` FROM `Extension`") {}

ResultCode CExtensionTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CExtensionTableRow> row = MakeRow<CExtensionTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->extension).Text(row->component).Text(row->progId).Text(row->mime).Text(row->feature);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CExtensionTableRow* added = row.get();
    AddRow(added->extension, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
