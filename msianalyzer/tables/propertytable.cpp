#include "msianalyzer/tables/propertytable.h"

#include <utility>

namespace roundup {

CPropertyTableAnalyzer::CPropertyTableAnalyzer() : CTableAnalyzer(u"SELECT `Property`, `Value` FROM `Property`") {}

ResultCode CPropertyTableAnalyzer::ReadRecord(RecordColumns& columns) {
    std::u16string_view property;
    if (const ResultCode rc = columns.Text(property).Result(); Failed(rc)) return Pass(rc);
    if (!IsWanted(property)) return kSuccess;
    RowPtr<CPropertyTableRow> row = MakeRow<CPropertyTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    row->property = property;
    if (const ResultCode rc = columns.Text(row->value).Result(); Failed(rc)) return Pass(rc);
    AddRow(property, std::move(row));
    return kSuccess;
}

}  // namespace roundup
