#include "msianalyzer/tables/registrytable.h"

#include <utility>

namespace roundup {

CRegistryTableAnalyzer::CRegistryTableAnalyzer(int number)
    : CTableAnalyzer(number == 1
                         ? u"SELECT `Registry`, `Root`, `Key`, `Name`, `Value`, `Component_` FROM `Registry`"
                         : u"SELECT `Registry`, `Root`, `Key`, `Name`, `Value`, `Component_` FROM `Registry2`") {}

ResultCode CRegistryTableAnalyzer::ReadRecord(RecordColumns& columns) {
    RowPtr<CRegistryTableRow> row = MakeRow<CRegistryTableRow>();
    if (row == nullptr) return Fail(SmallCode::ObjectMissing);
    std::u16string_view registry;
    std::u16string_view component;
    columns.Text(registry).Integer(row->root).Text(row->key).Text(row->name).Text(row->value).Text(component);
    if (const ResultCode rc = columns.Result(); Failed(rc)) return Pass(rc);
    CRegistryTableRow* added = row.get();
    AddRow(registry, std::move(row));
    AddRowIndex(component, added);
    return kSuccess;
}

}  // namespace roundup
