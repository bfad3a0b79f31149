#include "msianalyzer/tables/inifiletable.h"

#include <utility>

namespace roundup {

CIniFileTableAnalyzer::CIniFileTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `IniFile`, `FileName`, `DirProperty`, `Section`, `Key`, `Value`, `Action`, "
          u"`Component_` FROM `IniFile`") {}

ResultCode CIniFileTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CIniFileTableRow> row = MakeRow<CIniFileTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view iniFile;
    std::u16string_view component;
    columns.Text(iniFile)
        .Text(row->fileName)
        .Text(row->dirProperty)
        .Text(row->section)
        .Text(row->key)
        .Text(row->value)
        .Integer(row->action)
        .Text(component);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CIniFileTableRow* added = row.get();
    AddRow(iniFile, std::move(row));
    AddRowIndex(component, added);
    return kSuccess;
}

}  // namespace roundup
