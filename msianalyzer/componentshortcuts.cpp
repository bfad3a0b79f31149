// Shortcuts and ini entries of a component.
#include "msianalyzer/component.h"
#include "msianalyzer/dataexport.h"
#include "msianalyzer/formattedstring.h"
#include "msianalyzer/tables/inifiletable.h"
#include "msianalyzer/tables/shortcuttable.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"

namespace roundup {

namespace {

// The package's icons lie in the installer's folder of the product.
std::u16string IconPath(std::u16string_view productCode, std::u16string_view icon) {
    char16_t windows[260] = {};
    const std::uint32_t length = CurrentMachine().System().GetWindowsFolder(windows, 260);
    std::u16string path(windows, length < 260 ? length : 0);
    return path.append(u"\\Installer\\").append(productCode).append(u"\\").append(icon);
}

// "%NAME%" is a variable of the environment, anything else the name of a folder.
ResultCode WorkingFolder(const CMSIAnalyzer& analyzer, std::u16string_view name, std::u16string& folder) {
    if (name.empty()) return kSuccess;
    if (name.size() > 2 && name.front() == u'%') return ReadVariable(name.substr(1, name.size() - 2), folder);
    const std::u16string* const known = analyzer.FindProperty(name);
    if (known != nullptr) folder = *known;
    return kSuccess;
}

}  // namespace

ResultCode CComponent::ExportShortcuts() {
    const Rows rows = RowsOf(MsiTable::Shortcut);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    for (const RowIndex::Entry& entry : rows) {
        if (const ResultCode rc = WriteShortcut(RowOf<CShortcutTableRow>(entry)); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Plain, kExportThreshold, ItemType::kShortcut);
}

ResultCode CComponent::WriteShortcut(const CShortcutTableRow& row) {
    std::u16string dir;
    if (const ResultCode rc = m_analyzer->ResolveDirectory(row.directory, dir); Failed(rc)) return Pass(rc);
    const std::u16string_view name = GetLongName(row.name);
    if (dir.empty() || name.empty()) return kSuccess;
    std::u16string link = dir;
    link.append(name).append(u".lnk");
    if (!PathExists(link.c_str())) return kSuccess;
    const CFormattedString format(m_analyzer);
    std::u16string target;
    // A target without a token is a feature: the link is advertised, and leads to the component's key file.
    const bool advertised = row.target.find(u'[') == std::u16string_view::npos;
    if (const ResultCode rc =
            advertised ? m_analyzer->GetComponentPath(row.component, target, true) : format.Format(row.target, target);
        Failed(rc)) {
        Skip(rc);
        return kSuccess;
    }
    std::u16string arguments;
    if (const ResultCode rc = format.Format(row.arguments, arguments); Failed(rc)) return Pass(rc);
    const std::u16string icon = row.icon.empty() ? std::u16string() : IconPath(m_analyzer->ProductCode(), row.icon);
    std::u16string workDir;
    if (const ResultCode rc = WorkingFolder(*m_analyzer, row.wkDir, workDir); Failed(rc)) return Pass(rc);
    const ResultCode rc = WriteStrings(m_dataFile, dir, name, target, arguments, workDir, icon);
    if (Failed(rc)) return Pass(rc);
    return m_dataFile.WriteDword(row.iconIndex == kNullInteger ? 0 : static_cast<std::uint32_t>(row.iconIndex));
}

// The values are those of the file, not of the table.
ResultCode CComponent::ExportIniValues() {
    const Rows rows = RowsOf(MsiTable::IniFile);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    const CFormattedString format(m_analyzer);
    std::u16string path;
    std::u16string section;
    std::u16string key;
    for (const RowIndex::Entry& entry : rows) {
        const auto& row = RowOf<CIniFileTableRow>(entry);
        if (const ResultCode rc = m_analyzer->ResolveDirectory(row.dirProperty, path); Failed(rc)) return Pass(rc);
        path.append(row.fileName);
        if (!PathExists(path.c_str())) continue;
        if (const ResultCode rc = format.Format(row.section, section); Failed(rc)) return Pass(rc);
        if (const ResultCode rc = format.Format(row.key, key); Failed(rc)) return Pass(rc);
        char16_t value[512] = {};
        const std::uint32_t length =
            CurrentMachine().Profile().GetString(section.c_str(), key.c_str(), nullptr, value, 512, path.c_str());
        const std::u16string_view text(value, length);
        if (const ResultCode rc = WriteStrings(m_dataFile, path, section, key, text); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Plain, kExportThreshold, ItemType::kIni);
}

}  // namespace roundup
