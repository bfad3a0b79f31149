#include "msianalyzer/tables/msiassemblytable.h"

#include <utility>

namespace roundup {

CMsiAssemblyTableAnalyzer::CMsiAssemblyTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Component_`, `Attributes` FROM `MsiAssembly`") {}

ResultCode CMsiAssemblyTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CMsiAssemblyTableRow> row = MakeRow<CMsiAssemblyTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->component).Integer(row->attributes);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CMsiAssemblyTableRow* added = row.get();
    AddRow(added->component, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
