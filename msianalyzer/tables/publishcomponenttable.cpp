#include "msianalyzer/tables/publishcomponenttable.h"

#include <utility>

namespace roundup {

CPublishComponentTableAnalyzer::CPublishComponentTableAnalyzer()
    : CTableAnalyzer(u"SELECT `ComponentId` FROM `PublishComponent`") {}

ResultCode CPublishComponentTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CPublishComponentTableRow> row = MakeRow<CPublishComponentTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->componentId);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->componentId;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
