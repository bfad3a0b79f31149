// Registry keys and values of a component.
#include <algorithm>

#include "msianalyzer/component.h"
#include "msianalyzer/dataexport.h"
#include "msianalyzer/exclusiveconfigfileanalyzer.h"
#include "msianalyzer/formattedstring.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/tables/registrytable.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::u16string_view kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

// The numbers of column Root (learn.microsoft.com, "Registry table"); -1 depends on how the product is installed.
bool RootOf(std::int32_t number, bool perMachine, KeyHandle& root) noexcept {
    constexpr KeyHandle kRoots[] = {kHkeyClassesRoot, kHkeyCurrentUser, kHkeyLocalMachine, kHkeyUsers};
    if (number == -1) {
        root = perMachine ? kHkeyLocalMachine : kHkeyCurrentUser;
        return true;
    }
    if (number < 0 || number > 3) return false;
    root = kRoots[number];
    return true;
}

// How much of a key belongs to a row.
enum class Extent : std::uint8_t { Extension, Key, Value };

Extent ExtentOf(KeyHandle root, std::u16string_view key, const CRegistryTableRow& row) noexcept {
    if (root == kHkeyClassesRoot && key.front() == u'.') return Extent::Extension;
    if (!row.value.empty()) return Extent::Value;
    // Names that make or remove a key as such.
    const bool keyAlone = row.name.empty() || row.name == u"+" || row.name == u"-" || row.name == u"*";
    return keyAlone ? Extent::Key : Extent::Value;
}

}  // namespace

ResultCode CComponent::ExportRegistry(MsiTable table) {
    constexpr std::uint64_t kThreshold = 9;  // one record at least
    const Rows rows = RowsOf(table);
    if (rows.empty()) return kSuccess;
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    for (const RowIndex::Entry& entry : rows) {
        if (const ResultCode rc = WriteRegistryRow(save, RowOf<CRegistryTableRow>(entry)); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

ResultCode CComponent::WriteRegistryRow(CSaveRegistry2DataFile& save, const CRegistryTableRow& row) {
    KeyHandle root = 0;
    if (!RootOf(row.root, m_analyzer->IsPerMachine(), root)) return Fail(SmallCode::BadData);
    const CFormattedString format(m_analyzer);
    std::u16string key;
    if (const ResultCode rc = format.Format(row.key, key); Failed(rc)) {
        Skip(rc);
        return kSuccess;
    }
    if (key.empty()) return kSuccess;
    const Extent extent = ExtentOf(root, key, row);
    if (extent == Extent::Value) {
        std::u16string name;
        Ignore(format.Format(row.name, name), u"the name is taken as far as it could be resolved");
        return save.SaveValue(root, key, name, m_is64Bit);
    }
    if (extent == Extent::Extension) key.resize(std::min(key.find(u'\\'), key.size()));
    if (extent == Extent::Key && EqualsNoCase(key, kUninstallKey)) return kSuccess;
    if (IsExcluded(root, key)) return kSuccess;
    return save.SaveKey(root, key, m_is64Bit);
}

bool CComponent::IsExcluded(KeyHandle root, std::u16string_view key) const {
    return m_analyzer->GlobalExclusion()->IsRegExcluded(root, key) ||
           m_analyzer->ProductExclusion()->IsRegExcluded(root, key);
}

}  // namespace roundup
