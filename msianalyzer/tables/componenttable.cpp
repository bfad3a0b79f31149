#include "msianalyzer/tables/componenttable.h"

#include <utility>

namespace roundup {

CComponentTableAnalyzer::CComponentTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `Component`, `ComponentId`, `Directory_`, `Attributes`, `KeyPath` FROM "
          u"`Component`") {}

ResultCode CComponentTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CComponentTableRow> row = MakeRow<CComponentTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->component)
        .Text(row->componentId)
        .Text(row->directory)
        .Integer(row->attributes)
        .Text(row->keyPath);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->component;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
