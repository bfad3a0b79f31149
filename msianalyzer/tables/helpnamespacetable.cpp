#include "msianalyzer/tables/helpnamespacetable.h"

#include <utility>

namespace roundup {

CHelpNamespaceTableAnalyzer::CHelpNamespaceTableAnalyzer()
    : CTableAnalyzer(
          u"SELECT `NamespaceKey`, `NamespaceName`, `File_Collection`, `Description` FROM "
          u"`HelpNamespace`") {}

ResultCode CHelpNamespaceTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CHelpNamespaceTableRow> row = MakeRow<CHelpNamespaceTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view namespaceKey;
    columns.Text(namespaceKey).Text(row->namespaceName).Text(row->fileCollection).Text(row->description);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    AddRow(namespaceKey, std::move(row));
    return kSuccess;
}

}  // namespace roundup
