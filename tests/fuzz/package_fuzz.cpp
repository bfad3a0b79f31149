// Installer databases: whatever the bytes, a package opens or not, its tables load or fail, and all streams can be
// asked for. The seeds are made by make-package-seeds.py.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "msianalyzer/imsiproductinfo.h"
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
#include "tests/support/machinebuilder.h"

namespace roundup {
namespace {

template <class Analyzer>
void LoadTable(InstallerHandle database) {
    Analyzer table;
    Ignore(table.Analyze(database), u"broken tables are what this is about");
    for (const RowIndex::Entry& entry : table.GetRowIndex()) {
        if (entry.row == nullptr || table.GetRowIndex().Find(entry.key) == nullptr) std::abort();
    }
}

template <class... Analyzers>
void LoadTables(InstallerHandle database) {
    (LoadTable<Analyzers>(database), ...);
}

void ReadStreams(IInstaller& installer, InstallerHandle database) {
    InstallerHandle view = 0;
    if (installer.OpenView(database, u"SELECT * FROM `_Streams`", view) != kErrorSuccess) std::abort();
    (void)installer.ExecuteView(view);
    InstallerHandle record = 0;
    while (installer.FetchRecord(view, record) == kErrorSuccess) {
        std::vector<std::byte> bytes(installer.GetDataSize(record, 2));
        auto size = static_cast<std::uint32_t>(bytes.size());
        (void)installer.ReadStream(record, 2, bytes.data(), size);
        if (size > bytes.size()) std::abort();
        installer.CloseHandle(record);
    }
}

}  // namespace
}  // namespace roundup

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace roundup;
    MachineBuilder builder;
    builder.File(u"C:\\a.msi", std::string_view(reinterpret_cast<const char*>(data), size));
    const std::unique_ptr<Machine> machine = builder.Build();
    const MachineScope scope(*machine);
    IInstaller& installer = machine->Installer();
    InstallerHandle database = 0;
    if (installer.OpenDatabase(u"C:\\a.msi", database) != kErrorSuccess) return 0;
    LoadTables<CAppIdTableAnalyzer, CClassTableAnalyzer, CComponentTableAnalyzer, CCustomActionTableAnalyzer,
               CDirectoryTableAnalyzer, CExtensionTableAnalyzer, CFeatureComponentsTableAnalyzer, CFeatureTableAnalyzer,
               CFileTableAnalyzer, CHelpNamespaceTableAnalyzer, CIconTableAnalyzer, CIniFileTableAnalyzer,
               CInstallExecuteSequenceTableAnalyzer, CMIMETableAnalyzer, CMsiAssemblyNameTableAnalyzer,
               CMsiAssemblyTableAnalyzer, CProgIdTableAnalyzer, CPropertyTableAnalyzer, CPublishComponentTableAnalyzer,
               CSelfRegTableAnalyzer, CServiceInstallTableAnalyzer, CShortcutTableAnalyzer, CTypeLibTableAnalyzer>(
        database);
    CRegistryTableAnalyzer registry(1);
    Ignore(registry.Analyze(database), u"broken tables are what this is about");
    ReadStreams(installer, database);
    const ProductInfoPtr info(CreateMSIProductInfo());
    if (Failed(info->Open(u"C:\\a.msi"))) return 0;
    std::unique_ptr<std::byte[]> icon;
    std::uint32_t iconSize = 0;
    Ignore(info->GetProductIcon(&icon, &iconSize), u"most packages have none");
    return 0;
}
