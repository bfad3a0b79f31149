// The actions ProcessComponents, PublishComponents and RegisterProgIdInfo.
#include "msianalyzer/dataexport.h"
#include "msianalyzer/installdetails.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/progidtable.h"
#include "utility/reg.h"

namespace roundup {

ResultCode CInstallDetails::ExportUserComponents(bool view64) {
    return ForEachUser(u"Components", view64, ItemType::kComponentRegistry, &CInstallDetails::SaveUserComponents);
}

ResultCode CInstallDetails::SaveUserComponents(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64) {
    std::u16string packed;
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::Component)) {
        const std::u16string_view id = RowOf<CComponentTableRow>(entry).componentId;
        if (id.empty()) continue;
        if (const ResultCode rc = PackCode(id, packed); Failed(rc)) return Pass(rc);
        if (const ResultCode rc = save.SaveKey(key.GetKeyHandle(), packed, view64); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CInstallDetails::PublishComponents() {
    constexpr std::u16string_view kUserInstaller = u"Software\\Microsoft\\Installer";
    if (const ResultCode rc = ExportComponentKeys(kHkeyClassesRoot, u"Installer", true, false); Failed(rc)) {
        return Pass(rc);
    }
    for (const bool view64 : {true, false}) {
        const ResultCode rc = ExportComponentKeys(kHkeyCurrentUser, kUserInstaller, true, view64);
        if (Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CInstallDetails::ExportProgIds() {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::ProgId)) {
        const std::u16string_view progId = RowOf<CProgIdTableRow>(entry).progId;
        // The empty path is the whole root.
        if (progId.empty()) continue;
        if (const ResultCode rc = save.SaveKey(kHkeyClassesRoot, progId, Is64Bit()); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

}  // namespace roundup
