#include "msianalyzer/feature.h"

#include "msianalyzer/component.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/featurecomponentstable.h"
#include "msianalyzer/tables/featuretable.h"

namespace roundup {

ResultCode CFeature::Execute(const CMSIAnalyzer* analyzer, MsiAction action) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_analyzer = analyzer;
    m_action = action;
    for (const RowIndex::Entry& entry : analyzer->Rows(MsiTable::FeatureComponents).Range(m_row.feature)) {
        const auto& row = RowOf<CFeatureComponentsTableRow>(entry);
        if (const ResultCode rc = RunComponent(row.component); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CFeature::RunComponent(std::u16string_view key) const {
    const CComponentTableRow* row = nullptr;
    if (Failed(m_analyzer->FindComponent(key, row)) || row->componentId.empty()) return kSuccess;
    bool installed = false;
    if (const ResultCode rc = m_analyzer->IsComponentInstalled(row->componentId, installed); Failed(rc))
        return Pass(rc);
    if (!installed) return kSuccess;
    CComponent component(*row);
    return component.Execute(m_analyzer, m_action);
}

}  // namespace roundup
