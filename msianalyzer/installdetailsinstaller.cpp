// The product's keys below "Installer", of the machine and of the user.
#include <cstring>

#include "msianalyzer/dataexport.h"
#include "msianalyzer/installdetails.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/publishcomponenttable.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/pathtext.h"
#include "utility/reg.h"
#include "utility/textscan.h"

namespace roundup {

namespace {

constexpr std::uint32_t kMaxPath = 260;

bool IsAbsent(ResultCode rc) noexcept { return Win32Of(rc) == kErrorFileNotFound; }

std::u16string Below(std::u16string_view key, std::u16string_view part) {
    return std::u16string(key).append(u"\\").append(part);
}

std::u16string TextOf(const RegValueBlock& block) {
    const std::span<const std::byte> bytes = block.Data();
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    text.resize(UpToZero(text).size());
    return text;
}

void ExpandVariables(std::u16string& path) {
    char16_t expanded[kMaxPath] = {};
    const std::uint32_t size = CurrentMachine().System().ExpandEnvironment(path.c_str(), expanded, kMaxPath);
    // What does not fit is nothing, and the text stays.
    if (size > 1 && size <= kMaxPath) path = expanded;
}

// Cleans what begins at the drive letter; what stands before it stays.
void CleanFromDrive(std::u16string& path) {
    const std::size_t colon = path.find(u":\\");
    if (colon == path.npos || colon == 0) return;
    path.resize(colon - 1 + CleanPath(path.data() + colon - 1));
}

}  // namespace

ResultCode CInstallDetails::ExportInstallerKeys(KeyHandle root, std::u16string_view key, bool view64) {
    if (view64 && !Is64Bit()) return kSuccess;
    const std::u16string& product = m_analyzer->ProductCode();
    const std::u16string& upgrade = m_analyzer->UpgradeCode();
    if (!product.empty()) {
        const std::u16string products = Below(key, u"Products");
        if (const ResultCode rc = ExportCode(root, products, product, view64); Failed(rc)) return Pass(rc);
        Ignore(ReportProductIcon(root, products, product), u"a product without an icon is whole");
        if (const ResultCode rc = ExportCode(root, Below(key, u"Features"), product, view64); Failed(rc))
            return Pass(rc);
    }
    if (!upgrade.empty()) {
        const ResultCode rc = ExportCode(root, Below(key, u"UpgradeCodes"), upgrade, view64);
        if (Failed(rc)) return Pass(rc);
    }
    if (const ResultCode rc = ExportPatchKeys(root, key, view64); Failed(rc)) return Pass(rc);
    return ExportComponentKeys(root, key, false, false);
}

ResultCode CInstallDetails::ExportCode(KeyHandle root, std::u16string_view key, std::u16string_view code, bool view64) {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    std::u16string packed;
    if (const ResultCode rc = PackCode(code, packed); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    if (const ResultCode rc = save.SaveKey(root, Below(key, packed), view64); Failed(rc)) return Pass(rc);
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

ResultCode CInstallDetails::ReportProductIcon(KeyHandle root, std::u16string_view key, std::u16string_view code) const {
    std::u16string packed;
    if (const ResultCode rc = PackCode(code, packed); Failed(rc)) return Pass(rc);
    CWFYRegKey product;
    RegValueBlock value;
    ResultCode rc = product.Open(root, Below(key, packed).c_str(), Is64Bit(), false);
    if (Succeeded(rc)) rc = product.QueryValue(u"ProductIcon", value);
    if (Failed(rc)) return IsAbsent(rc) ? kSuccess : Pass(rc);
    if (value.Type() != kRegSz && value.Type() != kRegExpandSz) return Fail(SmallCode::BadData, value.Type());
    std::u16string path = TextOf(value);
    if (value.Type() == kRegExpandSz) ExpandVariables(path);
    CleanFromDrive(path);
    const std::uint64_t size = GetFileSize64(path.c_str());
    const std::size_t nameAt = EndOfLast(path, u'\\');
    if (size == 0 || nameAt == 0) return kSuccess;
    m_analyzer->Report(path.substr(0, nameAt), 0, ItemType::kFolder);
    m_analyzer->Report(path, size, ItemType::kFile);
    return kSuccess;
}

ResultCode CInstallDetails::ExportPatchKeys(KeyHandle root, std::u16string_view key, bool view64) {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    const std::u16string patches = Below(key, u"Patches");
    for (const std::u16string& patch : m_patches) {
        if (const ResultCode rc = save.SaveKey(root, Below(patches, patch), view64); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

ResultCode CInstallDetails::ExportComponentKeys(KeyHandle root, std::u16string_view key, bool published, bool view64) {
    if (view64 && !Is64Bit()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    const std::u16string components = Below(key, u"Components");
    std::u16string packed;
    for (const RowIndex::Entry& entry :
         m_analyzer->Rows(published ? MsiTable::PublishComponent : MsiTable::Component)) {
        const std::u16string_view id = published ? RowOf<CPublishComponentTableRow>(entry).componentId
                                                 : RowOf<CComponentTableRow>(entry).componentId;
        if (id.empty()) continue;
        if (const ResultCode rc = PackCode(id, packed); Failed(rc)) return Pass(rc);
        if (const ResultCode rc = save.SaveKey(root, Below(components, packed), view64); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

}  // namespace roundup
