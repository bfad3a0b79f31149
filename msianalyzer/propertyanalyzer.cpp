#include "msianalyzer/propertyanalyzer.h"

#include "msianalyzer/formattedstring.h"
#include "msianalyzer/tables/customactiontable.h"
#include "msianalyzer/tables/installexecutesequencetable.h"
#include "msianalyzer/tables/propertytable.h"

namespace roundup {

ResultCode CPropertyAnalyzer::Init(const CMSIAnalyzer* analyzer) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_analyzer = analyzer;
    m_initialized = true;
    return kSuccess;
}

ResultCode CPropertyAnalyzer::Analyze() {
    if (!m_initialized) return Fail(SmallCode::ObjectMissing);
    CopyTable();
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::CustomAction)) {
        if (!AddAction(RowOf<CCustomActionTableRow>(entry))) break;
    }
    return kSuccess;
}

void CPropertyAnalyzer::CopyTable() {
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::Property)) {
        const auto& row = RowOf<CPropertyTableRow>(entry);
        m_properties.emplace(row.property, row.value);
    }
}

// False when the scan is to end. The text is expanded while the analyzer has no properties yet, so that it sees
// predefined folders, what the Directory table reaches from them, and environment variables alone.
bool CPropertyAnalyzer::AddAction(const CCustomActionTableRow& row) {
    constexpr std::int32_t kSetsProperty = 51;
    if (row.type != kSetsProperty || row.target.empty()) return true;
    const RowIndex& sequence = m_analyzer->Rows(MsiTable::InstallExecuteSequence);
    const auto* step = static_cast<const CInstallExecuteSequenceTableRow*>(sequence.Find(row.action));
    if (step == nullptr || !step->condition.empty()) return true;  // nothing here can evaluate a condition
    std::u16string value(row.target);
    if (const ResultCode rc = CFormattedString(m_analyzer).Format(value); Failed(rc)) {
        Skip(rc);
        return false;
    }
    m_properties.emplace(row.source, std::move(value));
    return true;
}

}  // namespace roundup
