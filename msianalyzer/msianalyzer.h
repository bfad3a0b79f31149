// The analysis of one package, and what all of its parts share: the tables, the resolved names, the way out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "msianalyzer/imsianalyzer.h"
#include "msianalyzer/tableanalyzer.h"
#include "platform/installer.h"

namespace roundup {

class CComponentTableRow;
class CDirectoryTableRow;
class CExclusiveConfigFileAnalyzer;
class CFileTableRow;

// The tables, in the order in which they are loaded.
enum class MsiTable : std::uint8_t {
    Icon,
    Mime,
    File,
    Class,
    AppId,
    ProgId,
    IniFile,
    SelfReg,
    Property,
    Feature,
    TypeLib,
    Component,
    Registry,
    Shortcut,
    Extension,
    Directory,
    CustomAction,
    HelpNamespace,
    ServiceInstall,
    PublishComponent,
    FeatureComponents,
    InstallExecuteSequence,
    Registry2,
    MsiAssembly,
    MsiAssemblyName,
};
inline constexpr std::size_t kMsiTableCount = 25;

// Names to values, compared exactly; the first value of a name stays.
using PropertyMap = std::map<std::u16string, std::u16string, std::less<>>;

// Where a component lies: the full path of its key file, or its folder with a backslash at its end.
struct ComponentPath {
    bool isFile = false;
    std::u16string path;
};

// The row of an entry of an index, as the class that its table holds.
template <class Row>
const Row& RowOf(const RowIndex::Entry& entry) noexcept {
    return *static_cast<const Row*>(entry.row);
}

// Used by one thread. What is told below holds between Analyze and Close.
class CMSIAnalyzer final : public IMSIAnalyzer {
  public:
    CMSIAnalyzer();
    CMSIAnalyzer(const CMSIAnalyzer&) = delete;
    CMSIAnalyzer& operator=(const CMSIAnalyzer&) = delete;
    ~CMSIAnalyzer() override;

    ResultCode Open(const char16_t* msiPath, const char16_t* installSource, ItemCallback onItem, void* context,
                    IRemoveRepeatReg* filter) override;
    ResultCode Analyze() override;
    ResultCode Close() override;
    void Release() override;

    // The first step of Analyze: the tables alone.
    ResultCode LoadTables();

    std::u16string_view InstallSource() const noexcept { return m_installSource; }
    const std::u16string& ProductCode() const noexcept { return m_productCode; }
    // May be empty.
    const std::u16string& UpgradeCode() const noexcept { return m_upgradeCode; }
    bool IsPerMachine() const noexcept { return m_perMachine; }
    IRemoveRepeatReg* Filter() const noexcept { return m_filter; }
    // The rules that hold for every product, and those of this one; never null, empty without a rule file.
    const CExclusiveConfigFileAnalyzer* GlobalExclusion() const noexcept { return m_globalExclusion.get(); }
    const CExclusiveConfigFileAnalyzer* ProductExclusion() const noexcept { return m_productExclusion.get(); }

    // A table that the database does not have is empty.
    const CTableAnalyzer& Table(MsiTable table) const noexcept { return *m_tables[static_cast<std::size_t>(table)]; }
    // Its rows by primary key, by the key that leads to them from another table, and by the third key.
    const RowIndex& Rows(MsiTable table) const noexcept { return Table(table).GetRows(); }
    const RowIndex& RowsByParent(MsiTable table) const noexcept { return Table(table).GetRowIndex(); }
    const RowIndex& RowsByName(MsiTable table) const noexcept { return Table(table).GetSecondRows(); }

    // Rows by primary key. Small code 1 without a directory, 8 without a component or file; not logged.
    ResultCode FindDirectory(std::u16string_view key, const CDirectoryTableRow*& row) const;
    ResultCode FindComponent(std::u16string_view key, const CComponentTableRow*& row) const;
    ResultCode FindFile(std::u16string_view key, const CFileTableRow*& row) const;
    bool IsCustomAction(std::u16string_view action) const;
    // A property of the product or a directory that is known already; null without one.
    const std::u16string* FindProperty(std::u16string_view name) const;

    // The folder of a key of the Directory table, with a backslash at its end. Small code 1 when the way up ends at
    // no property and no predefined folder.
    ResultCode ResolveDirectory(std::u16string_view key, std::u16string& path) const;
    // The key file of an installed component (wantFile), or its folder with a backslash at its end. Small code 1 for
    // a component that is not installed, or that has no key file when one is wanted; not logged.
    ResultCode GetComponentPath(std::u16string_view component, std::u16string& path, bool wantFile) const;
    // Whether the machine has a component of that identifier, exactly as it stands. Always succeeds.
    ResultCode IsComponentInstalled(std::u16string_view componentId, bool& installed) const;

    // The files that register themselves by the component that they belong to, in the order of table SelfReg.
    const RowIndex& SelfRegFiles() const;

    // Hands an item to whoever opened the analysis; a data file is the receiver's from then on. False when nobody was
    // told: there is no receiver, or no memory.
    bool Report(std::u16string_view item, std::uint64_t value, std::uint32_t type) const;
    // Reports every file that FindFiles finds, with its size.
    ResultCode ReportFiles(std::u16string_view folder, bool recursive, std::u16string_view mask) const;

  private:
    // What came of a directory: its path, or the failure.
    struct ResolvedDirectory {
        ResultCode result;
        std::u16string path;
    };

    ResultCode OpenParts(const char16_t* msiPath, const char16_t* installSource, ItemCallback onItem, void* context,
                         IRemoveRepeatReg* filter);
    bool MakeTables();
    ResultCode RunAnalysis();
    ResultCode ReadProduct();
    void ReadAssignment();
    ResultCode BuildProperties();
    ResultCode BuildComponentPaths();
    ResultCode AddComponentPaths(bool files);
    ResultCode AddComponentFile(const CComponentTableRow& row);
    ResultCode AddComponentFolder(const CComponentTableRow& row);
    ResultCode LoadExclusions();
    ResultCode WalkDirectory(std::u16string_view key, std::u16string& path) const;
    bool ResolveBase(std::u16string_view key, std::u16string& path) const;

    bool m_opened = false;
    std::u16string m_msiPath;
    std::u16string m_installSource;
    InstallerHandle m_database = 0;
    std::u16string m_productCode;
    std::u16string m_upgradeCode;
    bool m_perMachine = false;
    ItemCallback m_onItem = nullptr;
    void* m_context = nullptr;
    std::array<TablePtr<CTableAnalyzer>, kMsiTableCount> m_tables;
    std::unique_ptr<CExclusiveConfigFileAnalyzer> m_globalExclusion;
    std::unique_ptr<CExclusiveConfigFileAnalyzer> m_productExclusion;
    PropertyMap m_properties;
    std::map<std::u16string, ComponentPath, std::less<>> m_componentPaths;
    // Many components share a folder. Good while the properties stay as they are.
    mutable std::map<std::u16string, ResolvedDirectory, std::less<>> m_directories;
    mutable RowIndex m_selfRegFiles;
    mutable bool m_selfRegIndexed = false;
    IRemoveRepeatReg* m_filter = nullptr;  // the caller's
};

}  // namespace roundup
