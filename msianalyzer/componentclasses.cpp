// COM classes, type libraries, file extensions and content types of a component.
#include <algorithm>

#include "msianalyzer/component.h"
#include "msianalyzer/dataexport.h"
#include "msianalyzer/formattedstring.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/tables/classtable.h"
#include "msianalyzer/tables/extensiontable.h"
#include "msianalyzer/tables/mimetable.h"
#include "msianalyzer/tables/typelibtable.h"
#include "msianalyzer/typelibinformation.h"
#include "utility/formattext.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kAnyVersion = u"0.0";

// The default value of a key as text; small code 0x21 unless it is REG_SZ with data.
ResultCode ReadDefault(const std::u16string& key, bool view64, std::u16string& text) {
    CWFYRegKey opened;
    RegValueBlock block;
    if (const ResultCode rc = opened.Open(kHkeyClassesRoot, key.c_str(), view64, false); Failed(rc))
        return PassQuiet(rc);
    if (const ResultCode rc = opened.QueryValue(nullptr, block); Failed(rc)) return PassQuiet(rc);
    if (block.Type() != kRegSz || block.Size() == 0) return FailQuiet(SmallCode::Win32Failure);
    const std::size_t length = block.Size() / sizeof(char16_t);
    text.resize(length);
    std::copy_n(block.Data().data(), length * sizeof(char16_t), reinterpret_cast<std::byte*>(text.data()));
    text.resize(std::min(text.find(u'\0'), text.size()));
    return kSuccess;
}

// The library and the version that a class refers to.
ResultCode TypeLibOf(std::u16string_view clsid, bool view64, std::u16string& libId, std::u16string& version) {
    constexpr std::size_t kGuidLength = 38;
    std::u16string key(u"CLSID\\");
    key.append(clsid);
    const std::size_t length = key.size();
    if (const ResultCode rc = ReadDefault(key.append(u"\\TypeLib"), view64, libId); Failed(rc)) return PassQuiet(rc);
    if (libId.size() > kGuidLength && libId[kGuidLength] == u'}') libId.resize(kGuidLength);
    key.resize(length);
    version = kAnyVersion;
    std::u16string told;
    if (Succeeded(ReadDefault(key.append(u"\\Version"), view64, told))) version = std::move(told);
    return kSuccess;
}

std::u16string TypeLibKey(std::u16string_view libId, std::u16string_view version) {
    std::u16string key(u"TypeLib\\");
    key.append(libId);
    if (version != kAnyVersion) key.append(u"\\").append(version);
    return key;
}

}  // namespace

// Several classes in one module give one record.
ResultCode CComponent::ExportClassModules() {
    const Rows rows = RowsOf(MsiTable::Class);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    std::set<CReisterComInfo> modules;
    for (const RowIndex::Entry& entry : rows) {
        const auto& row = RowOf<CClassTableRow>(entry);
        if (!row.clsid.empty()) m_clsids.emplace(row.clsid);
        if (!row.appId.empty()) m_appIds.emplace(row.appId);
        std::u16string path;
        if (const ResultCode rc = m_analyzer->GetComponentPath(row.component, path, true); Failed(rc) || path.empty()) {
            Skip(rc);
            continue;
        }
        std::u16string arguments;
        const ResultCode rc = CFormattedString(m_analyzer).Format(row.argument, arguments);
        if (Failed(rc)) return Pass(rc);
        modules.emplace(std::move(path), std::move(arguments));
    }
    for (const CReisterComInfo& module : modules) {
        const ResultCode rc = WriteStrings(m_dataFile, module.path, module.arguments);
        if (Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Plain, kExportThreshold, ItemType::kSelfRegistration);
}

// A file of registry records is handed over even when nothing was written but its end.
ResultCode CComponent::ExportClassKeys() {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (const std::u16string& clsid : m_clsids) {
        if (clsid.empty()) continue;
        if (const ResultCode rc = WriteClass(save, clsid); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kExportThreshold, ItemType::kRegistry);
}

ResultCode CComponent::WriteClass(CSaveRegistry2DataFile& save, std::u16string_view clsid) {
    std::u16string key(u"CLSID\\");
    key.append(clsid);
    if (const ResultCode rc = save.SaveKey(kHkeyClassesRoot, key, m_is64Bit); Failed(rc)) return Pass(rc);
    std::u16string libId;
    std::u16string version;
    if (Failed(TypeLibOf(clsid, m_is64Bit, libId, version))) return kSuccess;
    GetInterfacesOfTypeLib(m_interfaces, libId, version, m_is64Bit);
    return save.SaveKey(kHkeyClassesRoot, TypeLibKey(libId, version), m_is64Bit);
}

template <class Range, class KeyOf>
ResultCode CComponent::ExportKeys(const Range& range, KeyOf keyOf) {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (const auto& element : range) {
        const std::u16string key = keyOf(element);
        if (key.empty()) continue;
        if (const ResultCode rc = save.SaveKey(kHkeyClassesRoot, key, m_is64Bit); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kExportThreshold, ItemType::kRegistry);
}

ResultCode CComponent::ExportAppIdKeys() { return ExportIdentifierKeys(m_appIds, u"AppID\\"); }

ResultCode CComponent::ExportInterfaceKeys() { return ExportIdentifierKeys(m_interfaces, u"Interface\\"); }

ResultCode CComponent::ExportIdentifierKeys(const IdentifierSet& identifiers, std::u16string_view parent) {
    return ExportKeys(identifiers, [parent](const std::u16string& identifier) {
        return identifier.empty() ? std::u16string() : std::u16string(parent) + identifier;
    });
}

ResultCode CComponent::ExportTypeLibs() {
    const Rows rows = RowsOf(MsiTable::TypeLib);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (const RowIndex::Entry& entry : rows) {
        const auto& row = RowOf<CTypeLibTableRow>(entry);
        std::u16string version(kAnyVersion);
        std::u16string key = TypeLibKey(row.libId, kAnyVersion);
        if (row.version != kNullInteger) {
            version = FormatText(u"%d.%d", row.version >> 8, row.version & 0xFF);
            key.append(u"\\").append(version);
        }
        if (const ResultCode rc = save.SaveKey(kHkeyClassesRoot, key, m_is64Bit); Failed(rc)) return Pass(rc);
        GetClassesOfTypeLib(m_clsids, row.libId, version, m_is64Bit);
        GetInterfacesOfTypeLib(m_interfaces, row.libId, version, m_is64Bit);
    }
    return data.HandOver(DataTerminator::Registry, kExportThreshold, ItemType::kRegistry);
}

ResultCode CComponent::ExportExtensions() {
    const Rows rows = RowsOf(MsiTable::Extension);
    if (rows.empty()) return kSuccess;
    return ExportKeys(rows, [](const RowIndex::Entry& entry) {
        return u"." + std::u16string(RowOf<CExtensionTableRow>(entry).extension);
    });
}

ResultCode CComponent::ExportMime() {
    const Rows rows = RowsOf(MsiTable::Extension);
    if (rows.empty()) return kSuccess;
    const RowIndex& types = m_analyzer->Rows(MsiTable::Mime);
    return ExportKeys(rows, [&types](const RowIndex::Entry& entry) {
        const CTableRow* const mime = types.Find(RowOf<CExtensionTableRow>(entry).mime);
        if (mime == nullptr) return std::u16string();
        std::u16string key(u"MIME\\Database\\Content Type\\");
        return key.append(static_cast<const CMIMETableRow*>(mime)->contentType);
    });
}

}  // namespace roundup
