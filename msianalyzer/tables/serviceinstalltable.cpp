#include "msianalyzer/tables/serviceinstalltable.h"

#include <utility>

namespace roundup {

CServiceInstallTableAnalyzer::CServiceInstallTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `ServiceInstall`, `Name`, `DisplayName`, `ServiceType`, `StartType`, "
          u"`ErrorControl`, `LoadOrderGroup`, `Dependencies`, `StartName`, `Password`, `Arguments`, "
          u"`Component_`, `Description` FROM `ServiceInstall`") {}

ResultCode CServiceInstallTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CServiceInstallTableRow> row = MakeRow<CServiceInstallTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->serviceInstall)
        .Text(row->name)
        .Text(row->displayName)
        .Integer(row->serviceType)
        .Integer(row->startType)
        .Integer(row->errorControl)
        .Text(row->loadOrderGroup)
        .Text(row->dependencies)
        .Text(row->startName)
        .Text(row->password)
        .Text(row->arguments)
        .Text(row->component)
        .Text(row->description);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CServiceInstallTableRow* added = row.get();
    AddRow(added->serviceInstall, std::move(row));
    AddRowIndex(added->component, added);
    return kSuccess;
}

}  // namespace roundup
