// Services of a component.
#include <array>

#include "msianalyzer/component.h"
#include "msianalyzer/dataexport.h"
#include "msianalyzer/formattedstring.h"
#include "msianalyzer/tables/serviceinstalltable.h"

namespace roundup {

ResultCode CComponent::ExportServices() {
    const Rows rows = RowsOf(MsiTable::ServiceInstall);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    for (const RowIndex::Entry& entry : rows) {
        if (const ResultCode rc = WriteService(RowOf<CServiceInstallTableRow>(entry)); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Plain, kExportThreshold, ItemType::kService);
}

// A service runs the key file of its component, so one without such a file is none.
ResultCode CComponent::WriteService(const CServiceInstallTableRow& row) {
    const CFormattedString format(m_analyzer);
    const std::u16string_view sources[] = {row.name,      row.displayName, row.loadOrderGroup, row.dependencies,
                                           row.startName, row.password,    row.arguments};
    std::array<std::u16string, std::size(sources)> texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (const ResultCode rc = format.Format(sources[i], texts[i]); Failed(rc)) return Pass(rc);
    }
    std::u16string path;
    if (const ResultCode rc = m_analyzer->GetComponentPath(row.component, path, true); Failed(rc) || path.empty()) {
        Skip(rc);
        return kSuccess;
    }
    std::u16string description;
    if (const ResultCode rc = format.Format(row.description, description); Failed(rc)) return Pass(rc);

    const auto& [name, displayName, loadOrderGroup, dependencies, startName, password, arguments] = texts;
    if (const ResultCode rc = WriteStrings(m_dataFile, name, displayName); Failed(rc)) return Pass(rc);
    for (const std::int32_t number : {row.serviceType, row.startType, row.errorControl}) {
        if (const ResultCode rc = m_dataFile.WriteDword(static_cast<std::uint32_t>(number)); Failed(rc))
            return Pass(rc);
    }
    return WriteStrings(m_dataFile, loadOrderGroup, dependencies, startName, password, arguments, path, description);
}

}  // namespace roundup
