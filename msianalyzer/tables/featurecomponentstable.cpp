#include "msianalyzer/tables/featurecomponentstable.h"

#include <utility>

namespace roundup {

CFeatureComponentsTableAnalyzer::CFeatureComponentsTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Feature_`, `Component_` FROM `FeatureComponents`") {}

ResultCode CFeatureComponentsTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CFeatureComponentsTableRow> row = MakeRow<CFeatureComponentsTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->feature).Text(row->component);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->feature;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
