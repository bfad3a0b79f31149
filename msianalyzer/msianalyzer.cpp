#include "msianalyzer/msianalyzer.h"

#include <new>

#include "msianalyzer/datafile.h"
#include "msianalyzer/exclusiveconfigfileanalyzer.h"
#include "msianalyzer/findfile.h"
#include "msianalyzer/installedcomponents.h"
#include "msianalyzer/msianalyzecontroller.h"
#include "msianalyzer/propertyanalyzer.h"
#include "msianalyzer/tables/appidtable.h"
#include "msianalyzer/tables/classtable.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/customactiontable.h"
#include "msianalyzer/tables/directorytable.h"
#include "msianalyzer/tables/extensiontable.h"
#include "msianalyzer/tables/featurecomponentstable.h"
#include "msianalyzer/tables/featuretable.h"
#include "msianalyzer/tables/filetable.h"
#include "msianalyzer/tables/helpnamespacetable.h"
#include "msianalyzer/tables/icontable.h"
#include "msianalyzer/tables/inifiletable.h"
#include "msianalyzer/tables/installexecutesequencetable.h"
#include "msianalyzer/tables/mimetable.h"
#include "msianalyzer/tables/msiassemblynametable.h"
#include "msianalyzer/tables/msiassemblytable.h"
#include "msianalyzer/tables/progidtable.h"
#include "msianalyzer/tables/propertytable.h"
#include "msianalyzer/tables/publishcomponenttable.h"
#include "msianalyzer/tables/registrytable.h"
#include "msianalyzer/tables/selfregtable.h"
#include "msianalyzer/tables/serviceinstalltable.h"
#include "msianalyzer/tables/shortcuttable.h"
#include "msianalyzer/tables/typelibtable.h"
#include "platform/machine.h"
#include "utility/boundary.h"

namespace roundup {

namespace {

template <class T>
CTableAnalyzer* Make() noexcept {
    return new (std::nothrow) T;
}
template <int number>
CTableAnalyzer* MakeRegistry() noexcept {
    return new (std::nothrow) CRegistryTableAnalyzer(number);
}

// In the order of MsiTable.
constexpr CTableAnalyzer* (*kMakers[])() noexcept = {
    Make<CIconTableAnalyzer>,
    Make<CMIMETableAnalyzer>,
    Make<CFileTableAnalyzer>,
    Make<CClassTableAnalyzer>,
    Make<CAppIdTableAnalyzer>,
    Make<CProgIdTableAnalyzer>,
    Make<CIniFileTableAnalyzer>,
    Make<CSelfRegTableAnalyzer>,
    Make<CPropertyTableAnalyzer>,
    Make<CFeatureTableAnalyzer>,
    Make<CTypeLibTableAnalyzer>,
    Make<CComponentTableAnalyzer>,
    MakeRegistry<1>,
    Make<CShortcutTableAnalyzer>,
    Make<CExtensionTableAnalyzer>,
    Make<CDirectoryTableAnalyzer>,
    Make<CCustomActionTableAnalyzer>,
    Make<CHelpNamespaceTableAnalyzer>,
    Make<CServiceInstallTableAnalyzer>,
    Make<CPublishComponentTableAnalyzer>,
    Make<CFeatureComponentsTableAnalyzer>,
    Make<CInstallExecuteSequenceTableAnalyzer>,
    MakeRegistry<2>,
    Make<CMsiAssemblyTableAnalyzer>,
    Make<CMsiAssemblyNameTableAnalyzer>,
};
static_assert(std::size(kMakers) == kMsiTableCount);

constexpr std::u16string_view kEveryProduct = u"{00000000-0000-0000-0000-000000000000}";

}  // namespace

CMSIAnalyzer::CMSIAnalyzer() = default;

CMSIAnalyzer::~CMSIAnalyzer() { Ignore(Close(), u"always succeeds"); }

void CMSIAnalyzer::Release() { delete this; }

ResultCode CMSIAnalyzer::Open(const char16_t* msiPath, const char16_t* installSource, ItemCallback onItem,
                              void* context, IRemoveRepeatReg* filter) {
    Ignore(Close(), u"always succeeds");
    const ResultCode rc = AtBoundary([&] { return OpenParts(msiPath, installSource, onItem, context, filter); },
                                     [] { return Fail(SmallCode::ObjectMissing); });
    m_opened = true;
    if (Succeeded(rc)) return kSuccess;
    Ignore(Close(), u"always succeeds");
    return Pass(rc);
}

ResultCode CMSIAnalyzer::OpenParts(const char16_t* msiPath, const char16_t* installSource, ItemCallback onItem,
                                   void* context, IRemoveRepeatReg* filter) {
    if (msiPath == nullptr || onItem == nullptr || filter == nullptr) return Fail(SmallCode::BadArgument);
    m_msiPath = msiPath;
    m_installSource = installSource != nullptr ? installSource : u"";
    const Win32Error error =
        AtBoundary([this] { return CurrentMachine().Installer().OpenDatabase(m_msiPath.c_str(), m_database); },
                   [] { return kErrorNotEnoughMemory; });
    if (error != kErrorSuccess) return Fail(SmallCode::InstallerFailure, error);
    if (!MakeTables()) return Fail(SmallCode::ObjectMissing);
    if (const ResultCode rc = PrepareTempFolder(); Failed(rc)) return Pass(rc);
    m_onItem = onItem;
    m_context = context;
    m_filter = filter;
    return kSuccess;
}

bool CMSIAnalyzer::MakeTables() {
    for (std::size_t i = 0; i < kMsiTableCount; ++i) {
        m_tables[i].reset(kMakers[i]());
        if (m_tables[i] == nullptr) return false;
    }
    return true;
}

ResultCode CMSIAnalyzer::Close() {
    if (!m_opened) return kSuccess;
    m_selfRegFiles.Clear();
    m_selfRegIndexed = false;
    for (TablePtr<CTableAnalyzer>& table : m_tables) table.reset();
    m_properties.clear();
    m_componentPaths.clear();
    m_directories.clear();
    if (m_database != 0) CurrentMachine().Installer().CloseHandle(m_database);
    m_database = 0;
    m_globalExclusion.reset();
    m_productExclusion.reset();
    m_onItem = nullptr;
    m_context = nullptr;
    m_opened = false;
    return kSuccess;
}

ResultCode CMSIAnalyzer::Analyze() {
    if (!m_opened) return Fail(SmallCode::ObjectMissing);
    const ResultCode rc =
        AtBoundary([this] { return RunAnalysis(); }, [] { return Fail(SmallCode::BufferAllocation); });
    return Failed(rc) ? Pass(rc) : kSuccess;
}

// The way to real places is found before the sequence is walked: first what the product's tables say, then where the
// platform says that its components lie, which is believed more.
ResultCode CMSIAnalyzer::RunAnalysis() {
    if (const ResultCode rc = LoadTables(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = ReadProduct(); Failed(rc)) return Pass(rc);
    ReadAssignment();
    if (const ResultCode rc = BuildProperties(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = BuildComponentPaths(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = LoadExclusions(); Failed(rc)) return Pass(rc);
    CMSIAnalyzeController controller;
    if (const ResultCode rc = controller.Init(this); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = controller.Run(); Failed(rc)) return Pass(rc);
    return kSuccess;
}

ResultCode CMSIAnalyzer::LoadTables() {
    m_selfRegFiles.Clear();
    m_selfRegIndexed = false;
    for (const TablePtr<CTableAnalyzer>& table : m_tables) {
        if (const ResultCode rc = table->Analyze(m_database); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CMSIAnalyzer::ReadProduct() {
    const RowIndex& properties = Rows(MsiTable::Property);
    const auto* product = static_cast<const CPropertyTableRow*>(properties.Find(u"ProductCode"));
    if (product == nullptr) return Fail(SmallCode::GeneralFailure);
    m_productCode = product->value;
    const auto* upgrade = static_cast<const CPropertyTableRow*>(properties.Find(u"UpgradeCode"));
    m_upgradeCode = upgrade != nullptr ? upgrade->value : std::u16string_view();
    return kSuccess;
}

void CMSIAnalyzer::ReadAssignment() {
    char16_t type[10] = {};
    std::uint32_t length = static_cast<std::uint32_t>(std::size(type));
    IInstaller& installer = CurrentMachine().Installer();
    const Win32Error error = installer.GetProductInfo(m_productCode.c_str(), u"AssignmentType", type, length);
    m_perMachine = error != kErrorSuccess || type[0] == u'1';
}

ResultCode CMSIAnalyzer::BuildProperties() {
    m_properties.clear();
    m_directories.clear();
    CPropertyAnalyzer analyzer;
    if (const ResultCode rc = analyzer.Init(this); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = analyzer.Analyze(); Failed(rc)) return Pass(rc);
    m_properties = std::move(analyzer.Properties());
    m_directories.clear();
    return kSuccess;
}

ResultCode CMSIAnalyzer::LoadExclusions() {
    m_globalExclusion.reset(new (std::nothrow) CExclusiveConfigFileAnalyzer(this));
    m_productExclusion.reset(new (std::nothrow) CExclusiveConfigFileAnalyzer(this));
    if (m_globalExclusion == nullptr || m_productExclusion == nullptr) return Fail(SmallCode::BufferAllocation);
    std::u16string path;
    FindConfigFile(kEveryProduct, path, false);
    Ignore(m_globalExclusion->Load(path.c_str()), u"without a rule file nothing is excluded");
    FindConfigFile(m_productCode, path, false);
    Ignore(m_productExclusion->Load(path.c_str()), u"without a rule file nothing is excluded");
    return kSuccess;
}

bool CMSIAnalyzer::IsCustomAction(std::u16string_view action) const {
    return Rows(MsiTable::CustomAction).Find(action) != nullptr;
}

ResultCode CMSIAnalyzer::FindDirectory(std::u16string_view key, const CDirectoryTableRow*& row) const {
    row = static_cast<const CDirectoryTableRow*>(Rows(MsiTable::Directory).Find(key));
    return row != nullptr ? kSuccess : FailQuiet(SmallCode::GeneralFailure);
}

ResultCode CMSIAnalyzer::FindComponent(std::u16string_view key, const CComponentTableRow*& row) const {
    row = static_cast<const CComponentTableRow*>(Rows(MsiTable::Component).Find(key));
    return row != nullptr ? kSuccess : FailQuiet(SmallCode::NoMoreItems);
}

ResultCode CMSIAnalyzer::FindFile(std::u16string_view key, const CFileTableRow*& row) const {
    row = static_cast<const CFileTableRow*>(Rows(MsiTable::File).Find(key));
    return row != nullptr ? kSuccess : FailQuiet(SmallCode::NoMoreItems);
}

const std::u16string* CMSIAnalyzer::FindProperty(std::u16string_view name) const {
    const auto found = m_properties.find(name);
    return found != m_properties.end() ? &found->second : nullptr;
}

// The rows end at the first one that names no file, for every component alike.
const RowIndex& CMSIAnalyzer::SelfRegFiles() const {
    if (m_selfRegIndexed) return m_selfRegFiles;
    m_selfRegIndexed = true;
    for (const RowIndex::Entry& entry : Rows(MsiTable::SelfReg)) {
        CTableRow* const file = Rows(MsiTable::File).Find(RowOf<CSelfRegTableRow>(entry).file);
        if (file == nullptr) break;
        m_selfRegFiles.Add(static_cast<const CFileTableRow*>(file)->component, file);
    }
    return m_selfRegFiles;
}

ResultCode CMSIAnalyzer::IsComponentInstalled(std::u16string_view componentId, bool& installed) const {
    installed = GetInstalledComponents().Contains(componentId);
    return kSuccess;
}

bool CMSIAnalyzer::Report(std::u16string_view item, std::uint64_t value, std::uint32_t type) const {
    if (m_onItem == nullptr) return false;
    const OwnedString text(item);
    if (text.IsNull()) return false;
    Ignore(m_onItem(m_context, text.Text(), value, type), u"the receiver's own affair");
    return true;
}

ResultCode CMSIAnalyzer::ReportFiles(std::u16string_view folder, bool recursive, std::u16string_view mask) const {
    const FindFileCallback report = [](void* context, const FindFileItem& item) {
        static_cast<const CMSIAnalyzer*>(context)->Report(item.path, item.size, ItemType::kFile);
        return kSuccess;
    };
    const ResultCode rc = FindFiles(folder, report, const_cast<CMSIAnalyzer*>(this), recursive, mask);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

IMSIAnalyzer* CreateMSIAnalyzer() noexcept { return new (std::nothrow) CMSIAnalyzer; }

}  // namespace roundup
