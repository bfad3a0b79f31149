#include "msianalyzer/tables/directorytable.h"

#include <utility>

namespace roundup {

CDirectoryTableAnalyzer::CDirectoryTableAnalyzer()
    : CTableAnalyzer(u"SELECT `Directory`, `Directory_Parent`, `DefaultDir` FROM `Directory`") {}

ResultCode CDirectoryTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CDirectoryTableRow> row = MakeRow<CDirectoryTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view directory;
    columns.Text(directory).Text(row->directoryParent).Text(row->defaultDir);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    AddRow(directory, std::move(row));
    return kSuccess;
}

}  // namespace roundup
