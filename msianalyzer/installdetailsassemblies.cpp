// The action MsiPublishAssemblies: the side-by-side assemblies of the product.
#include <algorithm>
#include <iterator>
#include <vector>

#include "msianalyzer/dataexport.h"
#include "msianalyzer/installdetails.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/msiassemblynametable.h"
#include "msianalyzer/tables/msiassemblytable.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::u16string_view kWinners = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SideBySide\\Winners";
constexpr std::int32_t kWin32Assembly = 1;  // msidbAssemblyAttributesWin32

// The parts of an assembly's name that make it one of the side-by-side store.
struct AssemblyName {
    std::u16string_view name;
    std::u16string_view version;
    std::u16string_view token;
    std::u16string_view type;
    std::u16string_view architecture;

    void Take(const CMsiAssemblyNameTableRow& row) noexcept {
        const struct {
            std::u16string_view key;
            std::u16string_view& part;
        } parts[] = {{u"name", name},
                     {u"version", version},
                     {u"publicKeyToken", token},
                     {u"type", type},
                     {u"processorArchitecture", architecture}};
        for (const auto& entry : parts) {
            if (EqualsNoCase(row.name, entry.key)) entry.part = row.value;
        }
    }
    bool IsWhole() const noexcept {
        return !name.empty() && !version.empty() && !token.empty() && !type.empty() && !architecture.empty();
    }
};

// "9.0" of "9.0.21022.8"; empty without a second dot.
std::u16string_view MajorMinor(std::u16string_view version) noexcept {
    const std::size_t first = version.find(u'.');
    const std::size_t second = first == version.npos ? version.npos : version.find(u'.', first + 1);
    return second == version.npos ? std::u16string_view() : version.substr(0, second);
}

}  // namespace

ResultCode CInstallDetails::PublishAssemblies() {
    if (const ResultCode rc = AddSubkeys(kHkeyLocalMachine, kWinners, Is64Bit(), m_winners); Failed(rc))
        return Pass(rc);
    ReadAssemblies();
    if (const ResultCode rc = ExportWinners(); Failed(rc)) return Pass(rc);
    return ReportManifests();
}

void CInstallDetails::ReadAssemblies() {
    for (const RowIndex::Entry& entry : m_analyzer->Rows(MsiTable::MsiAssembly)) {
        const auto& row = RowOf<CMsiAssemblyTableRow>(entry);
        const CComponentTableRow* component = nullptr;
        if (const ResultCode rc = m_analyzer->FindComponent(row.component, component); Failed(rc)) {
            Skip(rc);
            continue;
        }
        bool installed = false;
        if (Failed(m_analyzer->IsComponentInstalled(component->componentId, installed))) continue;
        if (!installed || row.attributes != kWin32Assembly) continue;
        AddAssembly(row.component);
    }
}

void CInstallDetails::AddAssembly(std::u16string_view component) {
    AssemblyName parts;
    for (const RowIndex::Entry& entry : m_analyzer->RowsByParent(MsiTable::MsiAssemblyName).Range(component)) {
        parts.Take(RowOf<CMsiAssemblyNameTableRow>(entry));
    }
    if (!parts.IsWhole()) return;
    std::u16string prefix(parts.architecture);
    prefix.append(u"_").append(parts.name).append(u"_").append(parts.token);
    m_assemblies.emplace(std::move(prefix), parts.version);
}

// The winners that begin with a prefix lie side by side once case does not count. The first of them in the order of
// the set is the one that a walk over the whole set would meet first.
ResultCode CInstallDetails::ExportWinners() {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile save(m_dataFile, m_analyzer);
    std::vector<std::u16string_view> winners(m_winners.begin(), m_winners.end());
    const auto less = [](std::u16string_view a, std::u16string_view b) { return CompareNoCase(a, b) < 0; };
    std::sort(winners.begin(), winners.end(), less);
    for (const CWin32Assembly& assembly : m_assemblies) {
        const auto first = std::lower_bound(winners.begin(), winners.end(), assembly.prefix, less);
        const auto last = std::find_if(
            first, winners.end(), [&](std::u16string_view name) { return !StartsWithNoCase(name, assembly.prefix); });
        const std::u16string_view majorMinor = MajorMinor(assembly.version);
        if (first == last || majorMinor.empty()) continue;
        const std::u16string_view winner = *std::min_element(first, last);
        const std::u16string key =
            std::u16string(kWinners).append(u"\\").append(winner).append(u"\\").append(majorMinor);
        for (const std::u16string_view value : {std::u16string_view(assembly.version), std::u16string_view()}) {
            const ResultCode rc = save.SaveValue(kHkeyLocalMachine, key, value, Is64Bit());
            if (Failed(rc)) return Pass(rc);
        }
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kSideBySide);
}

ResultCode CInstallDetails::ReportManifests() const {
    std::u16string folder = WindowsFolder();
    if (folder.empty()) return kSuccess;
    folder += u"\\winsxs\\Manifests";
    for (const CWin32Assembly& assembly : m_assemblies) {
        const std::u16string mask =
            std::u16string(assembly.prefix).append(u"_").append(assembly.version).append(u"*.*");
        if (const ResultCode rc = ReportTree(folder, mask); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

}  // namespace roundup
