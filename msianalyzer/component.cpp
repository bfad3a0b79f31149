#include "msianalyzer/component.h"

#include "msianalyzer/dataexport.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/filetable.h"
#include "utility/fileinfo.h"

namespace roundup {

ResultCode CComponent::Execute(const CMSIAnalyzer* analyzer, MsiAction action) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_analyzer = analyzer;
    if (Failed(m_analyzer->GetComponentPath(Key(), m_folder, false))) m_folder.clear();
    constexpr std::uint32_t k64Bit = 256;  // msidbComponentAttributes64bit
    m_is64Bit = (static_cast<std::uint32_t>(m_row.attributes) & k64Bit) != 0;
    const ResultCode rc = Run(action);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

ResultCode CComponent::Run(MsiAction action) {
    using C = CComponent;
    switch (action) {
        case MsiAction::InstallFiles:
            return ExportFiles();
        case MsiAction::CreateShortcuts:
            return ExportShortcuts();
        case MsiAction::InstallServices:
            return ExportServices();
        case MsiAction::WriteRegistryValues:
            return InOrder(&C::ExportFirstRegistry, &C::ExportSecondRegistry);
        case MsiAction::SelfRegModules:
            return ExportSelfReg();
        case MsiAction::RegisterClassInfo:
            return InOrder(&C::ExportClassModules, &C::ExportClassKeys, &C::ExportAppIdKeys, &C::ExportInterfaceKeys);
        case MsiAction::RegisterTypeLibraries:
            return InOrder(&C::ExportTypeLibs, &C::ExportClassKeys, &C::ExportInterfaceKeys);
        case MsiAction::RegisterExtensionInfo:
            return ExportExtensions();
        case MsiAction::RegisterMimeInfo:
            return ExportMime();
        case MsiAction::WriteIniValues:
            return ExportIniValues();
        default:
            return Fail(SmallCode::BadData, static_cast<std::uint32_t>(action));
    }
}

template <class... Exports>
ResultCode CComponent::InOrder(Exports... exports) {
    for (const Export step : {Export(exports)...}) {
        if (const ResultCode rc = (this->*step)(); Failed(rc)) return PassQuiet(rc);
    }
    return kSuccess;
}

std::u16string_view CComponent::Key() const noexcept { return m_row.component; }

CComponent::Rows CComponent::RowsOf(MsiTable table) const { return m_analyzer->RowsByParent(table).Range(Key()); }

// What does not have to be there is looked for; the sizes are those of the table.
ResultCode CComponent::ExportFiles() {
    if (m_folder.empty()) return kSuccess;
    constexpr std::uint32_t kVital = 512;  // msidbFileAttributesVital
    bool any = false;
    std::u16string path;
    for (const RowIndex::Entry& entry : RowsOf(MsiTable::File)) {
        const auto& row = RowOf<CFileTableRow>(entry);
        path.assign(m_folder).append(GetLongName(row.fileName));
        if ((row.attributes & kVital) == 0 && !PathExists(path.c_str())) continue;
        m_analyzer->Report(path, static_cast<std::uint64_t>(row.fileSize), ItemType::kFile);
        any = true;
    }
    if (any) m_analyzer->Report(m_folder, 0, ItemType::kFolder);
    return kSuccess;
}

// For every component alike the rows end at the first one that names no file.
ResultCode CComponent::ExportSelfReg() {
    if (m_folder.empty()) return kSuccess;
    const Rows files = m_analyzer->SelfRegFiles().Range(Key());
    if (files.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    for (const RowIndex::Entry& entry : files) {
        const std::u16string path = m_folder + std::u16string(GetLongName(RowOf<CFileTableRow>(entry).fileName));
        if (const ResultCode rc = WriteStrings(m_dataFile, path, u""); Failed(rc)) return Pass(rc);
    }
    const ResultCode rc = data.HandOver(DataTerminator::Plain, kExportThreshold, ItemType::kSelfRegistration);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

}  // namespace roundup
