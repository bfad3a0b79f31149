#include "msianalyzer/tables/msiassemblynametable.h"

#include <utility>

namespace roundup {

CMsiAssemblyNameTableAnalyzer::CMsiAssemblyNameTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Component_`, `Name`, `Value` FROM `MsiAssemblyName`") {}

ResultCode CMsiAssemblyNameTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CMsiAssemblyNameTableRow> row = MakeRow<CMsiAssemblyNameTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view component;
    columns.Text(component).Text(row->name).Text(row->value);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CMsiAssemblyNameTableRow* added = row.get();
    OwnRow(std::move(row));
    AddRowIndex(component, added);
    return kSuccess;
}

}  // namespace roundup
