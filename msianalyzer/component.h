// One installed component of a product: what an action of the install sequence left of it on this machine.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "msianalyzer/datafile.h"
#include "msianalyzer/msiaction.h"
#include "msianalyzer/msianalyzer.h"
#include "platform/registry.h"
#include "utility/result.h"

namespace roundup {

class CComponentTableRow;
class CRegistryTableRow;
class CSaveRegistry2DataFile;
class CServiceInstallTableRow;
class CShortcutTableRow;

// Identifiers, compared exactly.
using IdentifierSet = std::set<std::u16string, std::less<>>;

// A module that registers itself.
class CReisterComInfo {
  public:
    CReisterComInfo(std::u16string modulePath, std::u16string moduleArguments)
        : path(std::move(modulePath)), arguments(std::move(moduleArguments)) {}
    virtual ~CReisterComInfo() = default;
    friend bool operator<(const CReisterComInfo& a, const CReisterComInfo& b) noexcept {
        return a.path != b.path ? a.path < b.path : a.arguments < b.arguments;
    }
    std::u16string path;
    std::u16string arguments;
};

// Lives for one action. The database says where to look, and what is reported is what is there: the data columns of
// its rows are never handed on. row belongs to a table of the analyzer. Used by one thread.
class CComponent {
  public:
    explicit CComponent(const CComponentTableRow& row) noexcept : m_row(row) {}
    CComponent(const CComponent&) = delete;
    CComponent& operator=(const CComponent&) = delete;
    ~CComponent() = default;

    // Runs the exports of the action; the first failure ends them. Small code 2 without an analyzer, 3 for an action
    // that does not concern a component.
    ResultCode Execute(const CMSIAnalyzer* analyzer, MsiAction action);

  private:
    using Rows = std::span<const RowIndex::Entry>;
    using Export = ResultCode (CComponent::*)();

    ResultCode Run(MsiAction action);
    template <class... Exports>
    ResultCode InOrder(Exports... exports);
    Rows RowsOf(MsiTable table) const;
    std::u16string_view Key() const noexcept;

    ResultCode ExportFiles();
    ResultCode ExportShortcuts();
    ResultCode ExportServices();
    ResultCode ExportFirstRegistry() { return ExportRegistry(MsiTable::Registry); }
    ResultCode ExportSecondRegistry() { return ExportRegistry(MsiTable::Registry2); }
    ResultCode ExportRegistry(MsiTable table);
    ResultCode ExportSelfReg();
    ResultCode ExportClassModules();
    ResultCode ExportClassKeys();
    ResultCode ExportAppIdKeys();
    ResultCode ExportInterfaceKeys();
    ResultCode ExportTypeLibs();
    ResultCode ExportExtensions();
    ResultCode ExportMime();
    ResultCode ExportIniValues();

    ResultCode WriteShortcut(const CShortcutTableRow& row);
    ResultCode WriteService(const CServiceInstallTableRow& row);
    ResultCode WriteRegistryRow(CSaveRegistry2DataFile& save, const CRegistryTableRow& row);
    bool IsExcluded(KeyHandle root, std::u16string_view key) const;
    ResultCode WriteClass(CSaveRegistry2DataFile& save, std::u16string_view clsid);
    // A data export of the keys below HKEY_CLASSES_ROOT that keyOf makes of each element; an empty one is left out.
    template <class Range, class KeyOf>
    ResultCode ExportKeys(const Range& range, KeyOf keyOf);
    ResultCode ExportIdentifierKeys(const IdentifierSet& identifiers, std::u16string_view parent);

    const CComponentTableRow& m_row;
    const CMSIAnalyzer* m_analyzer = nullptr;
    std::u16string m_folder;  // with a backslash at its end, or empty
    CDataFile m_dataFile;
    IdentifierSet m_clsids;  // what this action found
    IdentifierSet m_appIds;
    IdentifierSet m_interfaces;
    bool m_is64Bit = false;  // chooses the registry view
};

}  // namespace roundup
