#include "msianalyzer/tables/featuretable.h"

#include <utility>

namespace roundup {

CFeatureTableAnalyzer::CFeatureTableAnalyzer() : CTableAnalyzer(u"SELECT `Feature` FROM `Feature`") {}

ResultCode CFeatureTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CFeatureTableRow> row = MakeRow<CFeatureTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->feature);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->feature;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
