#include "msianalyzer/includeconfigfileanalyzer.h"

#include "msianalyzer/dataexport.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "utility/fileinfo.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr std::uint64_t kThreshold = 9;  // bytes
constexpr std::u16string_view kUnread = u"what cannot be read is left out";

}  // namespace

ResultCode CIncludeConfigFileAnalyzer::Load(const char16_t* path) {
    if (Analyzer() == nullptr) return Fail(SmallCode::BadArgument);
    if (const ResultCode rc = ParseFile(path); Failed(rc)) return Pass(rc);
    m_dataFile.reset(CreateDataFile());
    if (m_dataFile == nullptr) return Fail(SmallCode::BufferAllocation);
    if (const ResultCode rc = AnalyzeReg(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = AnalyzeFile(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = AnalyzeDir(); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = AnalyzeUninstall(); Failed(rc)) return Pass(rc);
    return AnalyzeDriver();
}

ResultCode CIncludeConfigFileAnalyzer::AnalyzeReg() {
    if (!HasEntries(u"reg")) return kSuccess;
    DataExport data(*Analyzer(), *m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    FollowEntries(u"reg", [this](std::u16string_view line) { return SaveEntry(line); });
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kRegistry);
}

ResultCode CIncludeConfigFileAnalyzer::SaveEntry(std::u16string_view line) {
    RegEntry entry;
    if (const ResultCode rc = ParseRegEntry(line, entry); Failed(rc)) return Pass(rc);
    if (!entry.name.empty() && !entry.data.empty()) return kSuccess;
    CSaveRegistry2DataFile save(*m_dataFile, Analyzer());
    for (const bool view64 : {true, false}) {
        if (view64 && !Is64Bit()) continue;
        Ignore(entry.name.empty() ? save.SaveKey(entry.root, entry.key, view64)
                                  : save.SaveValue(entry.root, entry.key, entry.name, view64),
               kUnread);
    }
    return kSuccess;
}

ResultCode CIncludeConfigFileAnalyzer::AnalyzeFile() {
    FollowEntries(u"file", [this](std::u16string_view line) {
        std::u16string path;
        if (const ResultCode rc = FormatFile(line, path); Failed(rc)) return PassQuiet(rc);
        const std::uint64_t size = GetFileSize64(path.c_str());
        if (size > 0) Analyzer()->Report(path, size, ItemType::kFile);
        return kSuccess;
    });
    return kSuccess;
}

ResultCode CIncludeConfigFileAnalyzer::AnalyzeDir() {
    FollowEntries(u"dir", [this](std::u16string_view line) {
        std::u16string path;
        if (const ResultCode rc = FormatDir(line, path); Failed(rc)) return PassQuiet(rc);
        Analyzer()->Report(path, 0, ItemType::kFolder);
        return Analyzer()->ReportFiles(path, true, u"*.*");
    });
    return kSuccess;
}

ResultCode CIncludeConfigFileAnalyzer::AnalyzeUninstall() {
    if (!HasEntries(u"uins")) return kSuccess;
    DataExport data(*Analyzer(), *m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    FollowEntries(u"uins", [this](std::u16string_view line) { return SaveUninstallKey(line); });
    return data.HandOver(DataTerminator::Registry, kThreshold, ItemType::kUninstallRegistry);
}

ResultCode CIncludeConfigFileAnalyzer::SaveUninstallKey(std::u16string_view line) {
    std::u16string_view root;
    std::u16string_view subkey;
    std::u16string_view name;
    std::u16string_view value;
    if (const ResultCode rc = ParseReg(line, root, subkey, name, value); Failed(rc)) return Pass(rc);
    if (Is64Bit()) Ignore(SaveSubkey(kHkeyLocalMachine, kUninstallKey, subkey, true), kUnread);
    Ignore(SaveSubkey(kHkeyLocalMachine, kUninstallKey, subkey, false), kUnread);
    return kSuccess;
}

ResultCode CIncludeConfigFileAnalyzer::SaveSubkey(KeyHandle root, std::u16string_view key, std::u16string_view subkey,
                                                  bool view64) {
    CWFYRegKey parent;
    if (const ResultCode rc = parent.Open(root, std::u16string(key).c_str(), view64, false); Failed(rc)) {
        return Win32Of(rc) == kErrorFileNotFound ? kSuccess : Pass(rc);
    }
    return CSaveRegistry2DataFile(*m_dataFile, Analyzer()).SaveKey(parent.GetKeyHandle(), subkey, view64);
}

ResultCode CIncludeConfigFileAnalyzer::AnalyzeDriver() {
    if (!HasEntries(u"driver")) return kSuccess;
    DataExport data(*Analyzer(), *m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    for (const auto& [keyword, line] : Entries()) {
        if (keyword != u"driver") continue;
        std::u16string_view first;
        std::u16string second;
        std::u16string_view third;
        if (const ResultCode rc = ParseDriver(line, first, second, third); Failed(rc)) {
            Skip(rc);
            continue;
        }
        if (const ResultCode rc = WriteStrings(*m_dataFile, first, second, third); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Plain, kThreshold, ItemType::kDriver);
}

}  // namespace roundup
