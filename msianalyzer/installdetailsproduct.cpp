// The action RegisterProduct: the product itself.
#include "msianalyzer/dataexport.h"
#include "msianalyzer/installdetails.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/systemfolderproperty.h"
#include "utility/casemap.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr std::u16string_view kUserInstaller = u"Software\\Microsoft\\Installer";

}  // namespace

ResultCode CInstallDetails::RegisterProduct() {
    constexpr Step kSteps[] = {&CInstallDetails::ExportUserProducts, &CInstallDetails::ExportUninstall,
                               &CInstallDetails::ExportUserPatches};
    for (const Step step : kSteps) {
        if (const ResultCode rc = InBothViews(step); Failed(rc)) return Pass(rc);
    }
    if (const ResultCode rc = ExportInstallerKeys(kHkeyClassesRoot, u"Installer", false); Failed(rc)) return Pass(rc);
    for (const bool view64 : {true, false}) {
        if (const ResultCode rc = ExportInstallerKeys(kHkeyCurrentUser, kUserInstaller, view64); Failed(rc)) {
            return Pass(rc);
        }
    }
    if (const ResultCode rc = ReportCacheFolder(); Failed(rc)) return Pass(rc);
    return ReportDownload();
}

ResultCode CInstallDetails::ExportUserProducts(bool view64) {
    return ForEachUser(u"Products", view64, ItemType::kProductRegistry, &CInstallDetails::SaveUserProduct);
}

ResultCode CInstallDetails::SaveUserProduct(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64) {
    std::u16string packed;
    if (const ResultCode rc = PackCode(m_analyzer->ProductCode(), packed); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = save.SaveKey(key.GetKeyHandle(), packed, view64); Failed(rc)) return Pass(rc);
    return AddSubkeys(key.GetKeyHandle(), packed.append(u"\\Patches"), view64, m_patches);
}

ResultCode CInstallDetails::ExportUninstall(bool view64) {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CWFYRegKey key;
    const ResultCode opened = key.Open(kHkeyLocalMachine, std::u16string(kUninstallKey).c_str(), view64, false);
    if (Failed(opened)) return Win32Of(opened) == kErrorFileNotFound ? kSuccess : Pass(opened);
    const std::u16string_view code = m_analyzer->ProductCode();
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (OwnedString name;;) {
        const ResultCode rc = key.EnumKey(name);
        if (Small(rc) == SmallCode::NoMoreItems) break;
        if (Failed(rc)) return Pass(rc);
        // Every name begins with a code that is empty.
        if (code.empty() || !name.View().starts_with(code)) continue;
        if (const ResultCode saved = save.SaveKey(key.GetKeyHandle(), name, view64); Failed(saved)) return Pass(saved);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kUninstallRegistry);
}

ResultCode CInstallDetails::ExportUserPatches(bool view64) {
    return ForEachUser(u"Patches", view64, ItemType::kPatchRegistry, &CInstallDetails::SaveUserPatches);
}

ResultCode CInstallDetails::SaveUserPatches(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64) {
    for (const std::u16string& patch : m_patches) {
        if (const ResultCode rc = save.SaveKey(key.GetKeyHandle(), patch, view64); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CInstallDetails::ReportCacheFolder() const {
    std::u16string folder = WindowsFolder();
    // Without a code it would be the folder of all products.
    if (folder.empty() || m_analyzer->ProductCode().empty()) return kSuccess;
    return ReportTree(folder.append(u"\\Installer\\").append(m_analyzer->ProductCode()), u"*.*");
}

ResultCode CInstallDetails::ReportDownload() const {
    std::u16string base;
    if (const ResultCode rc = ResolveSystemFolder(u"LocalAppDataFolder", base, false); Failed(rc)) return Pass(rc);
    base += u"\\Downloaded Installations\\";
    const std::u16string_view source = m_analyzer->InstallSource();
    if (source.size() <= base.size() || !StartsWithNoCase(source, base)) return kSuccess;
    return ReportTree(source, u"*.*");
}

}  // namespace roundup
