// Where directories and components really are.
#include <algorithm>
#include <vector>

#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/systemfolderproperty.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/directorytable.h"
#include "platform/machine.h"
#include "utility/log.h"

namespace roundup {

namespace {

// Folders in folders, as a table tells them. A table that nests deeper than this has a cycle, or is not meant to be
// installed; so is one whose path is longer than the longest of the platform.
constexpr std::size_t kMaxDepth = 1024;
constexpr std::size_t kMaxPath = 32'767;  // characters

void AddBackslash(std::u16string& path) {
    if (path.empty() || path.back() != u'\\') path += u'\\';
}

// The target's long name out of "target:source", each of them "short|long".
std::u16string_view GetDefaultDirName(std::u16string_view defaultDir) noexcept {
    return GetLongName(defaultDir.substr(0, defaultDir.find(u':')));
}

bool HasKeyFile(const CComponentTableRow& row) noexcept {
    constexpr std::uint32_t kKeyIsRegistry = 4;     // msidbComponentAttributesRegistryKeyPath
    constexpr std::uint32_t kKeyIsDataSource = 32;  // msidbComponentAttributesODBCDataSource
    return (static_cast<std::uint32_t>(row.attributes) & (kKeyIsRegistry | kKeyIsDataSource)) == 0;
}

ResultCode LeadsNowhere(std::u16string_view key) {
    TraceLine(u"Directory table leads nowhere: %s\n", key);
    return Fail(SmallCode::GeneralFailure);
}

std::u16string_view FolderOf(std::u16string_view path) noexcept { return path.substr(0, path.rfind(u'\\') + 1); }

}  // namespace

ResultCode CMSIAnalyzer::ResolveDirectory(std::u16string_view key, std::u16string& path) const {
    auto found = m_directories.find(key);
    if (found == m_directories.end()) {
        std::u16string walked;
        const ResultCode rc = WalkDirectory(key, walked);
        ResolvedDirectory resolved{rc, Failed(rc) ? std::u16string() : std::move(walked)};
        found = m_directories.emplace(key, std::move(resolved)).first;
    }
    if (Failed(found->second.result)) return PassQuiet(found->second.result);
    path = found->second.path;
    return kSuccess;
}

// Up the table until something is known, also that it leads nowhere, then down again through the names. A cycle ends
// at the bound.
ResultCode CMSIAnalyzer::WalkDirectory(std::u16string_view key, std::u16string& path) const {
    std::vector<std::u16string_view> names;
    std::size_t length = 0;
    while (!ResolveBase(key, path)) {
        const CDirectoryTableRow* row = nullptr;
        if (key.empty()) return FailQuiet(SmallCode::GeneralFailure);
        const auto known = m_directories.find(key);
        if (known != m_directories.end()) return PassQuiet(known->second.result);
        if (const ResultCode rc = FindDirectory(key, row); Failed(rc)) return PassQuiet(rc);
        if (names.size() == kMaxDepth) return LeadsNowhere(key);
        names.push_back(GetDefaultDirName(row->defaultDir));
        length += names.back().size() + 1;
        key = row->directoryParent;
    }
    if (path.size() + length > kMaxPath) return LeadsNowhere(key);
    std::for_each(names.rbegin(), names.rend(), [&path](std::u16string_view name) {
        if (!name.empty() && name != u".") path.append(name).append(u"\\");
    });
    return kSuccess;
}

bool CMSIAnalyzer::ResolveBase(std::u16string_view key, std::u16string& path) const {
    if (key.empty()) return false;
    const std::u16string* const property = FindProperty(key);
    if (property != nullptr && !property->empty()) {
        path = *property;
    } else if (const auto found = m_directories.find(key); found != m_directories.end()) {
        if (Failed(found->second.result)) return false;
        path = found->second.path;
    } else if (Failed(ResolveSystemFolder(key, path, m_perMachine))) {
        return false;
    }
    AddBackslash(path);
    return true;
}

ResultCode CMSIAnalyzer::BuildComponentPaths() {
    m_componentPaths.clear();
    if (const ResultCode rc = AddComponentPaths(true); Failed(rc)) return Pass(rc);
    m_directories.clear();  // the first pass says where folders really are
    const ResultCode rc = AddComponentPaths(false);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

ResultCode CMSIAnalyzer::AddComponentPaths(bool files) {
    for (const RowIndex::Entry& entry : Rows(MsiTable::Component)) {
        const auto& row = RowOf<CComponentTableRow>(entry);
        bool installed = false;
        if (const ResultCode rc = IsComponentInstalled(row.componentId, installed); Failed(rc)) return Pass(rc);
        if (!installed || HasKeyFile(row) != files) continue;
        if (const ResultCode rc = files ? AddComponentFile(row) : AddComponentFolder(row); Failed(rc)) Skip(rc);
    }
    return kSuccess;
}

ResultCode CMSIAnalyzer::AddComponentFile(const CComponentTableRow& row) {
    char16_t path[260] = {};
    std::uint32_t length = static_cast<std::uint32_t>(std::size(path));
    const std::u16string identifier(row.componentId);
    const std::int32_t state =
        CurrentMachine().Installer().GetComponentPath(m_productCode.c_str(), identifier.c_str(), path, length);
    if (state != kInstallStateLocal) return FailQuiet(SmallCode::BadData);
    const std::u16string_view file(path);
    m_properties.emplace(row.directory, FolderOf(file));
    m_componentPaths.emplace(row.component, ComponentPath{true, std::u16string(file)});
    return kSuccess;
}

ResultCode CMSIAnalyzer::AddComponentFolder(const CComponentTableRow& row) {
    std::u16string folder;
    if (const ResultCode rc = ResolveDirectory(row.directory, folder); Failed(rc)) return PassQuiet(rc);
    m_componentPaths.emplace(row.component, ComponentPath{false, std::move(folder)});
    return kSuccess;
}

ResultCode CMSIAnalyzer::GetComponentPath(std::u16string_view component, std::u16string& path, bool wantFile) const {
    const auto found = m_componentPaths.find(component);
    if (found == m_componentPaths.end()) return FailQuiet(SmallCode::GeneralFailure);
    const ComponentPath& place = found->second;
    if (wantFile && !place.isFile) return FailQuiet(SmallCode::GeneralFailure);
    path = wantFile || !place.isFile ? std::u16string_view(place.path) : FolderOf(place.path);
    return kSuccess;
}

}  // namespace roundup
