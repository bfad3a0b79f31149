#include "msianalyzer/msihelpfile.h"

#include "msianalyzer/dataexport.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/msimisc.h"
#include "msianalyzer/systemfolderproperty.h"
#include "msianalyzer/tables/filetable.h"
#include "msianalyzer/tables/helpnamespacetable.h"

namespace roundup {

namespace {

constexpr std::uint64_t kThreshold = 9;  // bytes

}  // namespace

ResultCode CMSIHelpFile::Init(const CMSIAnalyzer* analyzer) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_dataFile.reset(CreateDataFile());
    if (m_dataFile == nullptr) return Fail(SmallCode::BufferAllocation);
    m_analyzer = analyzer;
    m_initialized = true;
    return kSuccess;
}

ResultCode CMSIHelpFile::Run() {
    if (!m_initialized) return Fail(SmallCode::ObjectMissing);
    if (m_analyzer->Rows(MsiTable::HelpNamespace).IsEmpty()) return kSuccess;
    for (const std::u16string_view property : {u"CommonAppDataFolder", u"AppDataFolder"}) {
        if (const ResultCode rc = ReportHelpFolder(property); Failed(rc)) return Pass(rc);
    }
    return ExportNamespaces();
}

ResultCode CMSIHelpFile::ReportHelpFolder(std::u16string_view property) const {
    std::u16string folder;
    if (const ResultCode rc = ResolveSystemFolder(property, folder, false); Failed(rc)) return Pass(rc);
    folder += u"\\Microsoft Help";
    m_analyzer->Report(folder, 0, ItemType::kFolder);
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::HelpNamespace)) {
        const std::u16string_view name = RowOf<CHelpNamespaceTableRow>(entry).namespaceName;
        if (name.empty()) continue;
        const ResultCode rc = m_analyzer->ReportFiles(folder, false, std::u16string(name).append(u"*.*"));
        if (Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CMSIHelpFile::ExportNamespaces() {
    DataExport data(*m_analyzer, *m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::HelpNamespace)) {
        const auto& row = RowOf<CHelpNamespaceTableRow>(entry);
        if (row.namespaceName.empty() || row.description.empty()) continue;
        const std::u16string path = PathOf(row);
        if (path.empty()) continue;
        for (const std::u16string_view text : {row.namespaceName, std::u16string_view(path), row.description}) {
            if (const ResultCode rc = m_dataFile->WriteString(text); Failed(rc)) return Pass(rc);
        }
    }
    return data.HandOver(DataTerminator::Plain, kThreshold, ItemType::kHelpNamespace);
}

// The collection, when its component is installed; else empty.
std::u16string CMSIHelpFile::PathOf(const CHelpNamespaceTableRow& row) const {
    const CFileTableRow* file = nullptr;
    std::u16string path;
    if (Failed(m_analyzer->FindFile(row.fileCollection, file))) return {};
    if (Failed(m_analyzer->GetComponentPath(file->component, path, false)) || path.empty()) return {};
    return path.append(GetLongName(file->fileName));
}

}  // namespace roundup
