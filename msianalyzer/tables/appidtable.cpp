#include "msianalyzer/tables/appidtable.h"

#include <utility>

namespace roundup {

CAppIdTableAnalyzer::CAppIdTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `AppId`, `RemoteServerName`, `LocalService`, `ServiceParameters`, "
          u"`DllSurrogate`, `ActivateAtStorage`, `RunAsInteractiveUser` FROM `AppId`") {}

ResultCode CAppIdTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CAppIdTableRow> row = MakeRow<CAppIdTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    columns.Text(row->appId)
        .Text(row->remoteServerName)
        .Text(row->localService)
        .Text(row->serviceParameters)
        .Text(row->dllSurrogate)
        .Integer(row->activateAtStorage)
        .Integer(row->runAsInteractiveUser);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    const std::u16string_view key = row->appId;
    AddRow(key, std::move(row));
    return kSuccess;
}

}  // namespace roundup
