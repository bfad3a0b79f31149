#include "msianalyzer/tables/installexecutesequencetable.h"

#include <utility>

namespace roundup {

CInstallExecuteSequenceTableAnalyzer::CInstallExecuteSequenceTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Action`, `Condition`, `Sequence` FROM `InstallExecuteSequence`") {}

ResultCode CInstallExecuteSequenceTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CInstallExecuteSequenceTableRow> row = MakeRow<CInstallExecuteSequenceTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->action).Text(row->condition).Integer(row->sequence);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->action;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
