#include "msianalyzer/tables/filetable.h"

#include <utility>

#include "msianalyzer/decimaltext.h"

namespace roundup {

CFileTableAnalyzer::CFileTableAnalyzer()
    : CTableAnalyzer(u"SELECT `File`, `Component_`, `FileName`, `FileSize`, `Attributes` FROM `File`") {}

ResultCode CFileTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CFileTableRow> row = MakeRow<CFileTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view file;
    std::u16string_view fileSize;
    std::u16string_view attributes;
    columns.Text(file).Text(row->component).Text(row->fileName).Text(fileSize).Text(attributes);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    // The two numbers come as texts; a size may be larger than a number of the installer.
    row->fileSize = DecimalOf(fileSize);
    row->attributes = static_cast<std::uint32_t>(DecimalOf(attributes));
    CFileTableRow* added = row.get();
    AddRow(file, std::move(row));
    AddRowIndex(added->component, added);
    const std::u16string_view longName = GetLongName(added->fileName);
    if (!longName.empty()) AddSecondRow(longName, added);
    return kSuccess;
}

}  // namespace roundup
