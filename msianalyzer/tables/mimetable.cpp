#include "msianalyzer/tables/mimetable.h"

#include <utility>

namespace roundup {

CMIMETableAnalyzer::CMIMETableAnalyzer() : CTableAnalyzer(u"SELECT `ContentType`, `Extension_`, `CLSID` FROM `MIME`") {}

ResultCode CMIMETableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CMIMETableRow> row = MakeRow<CMIMETableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->contentType).Text(row->extension).Text(row->clsid);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->contentType;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
