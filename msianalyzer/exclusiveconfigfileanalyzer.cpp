#include "msianalyzer/exclusiveconfigfileanalyzer.h"

namespace roundup {

ResultCode CExclusiveConfigFileAnalyzer::Load(const char16_t* path) {
    m_excludedRegs.clear();
    m_excludedDirs.clear();
    if (const ResultCode rc = ParseFile(path); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = LoadReg(); Failed(rc)) return Pass(rc);
    return LoadDir();
}

bool CExclusiveConfigFileAnalyzer::IsRegExcluded(KeyHandle root, std::u16string_view key) const {
    return !m_excludedRegs.empty() && m_excludedRegs.contains(CExclusiveRegInfo(root, key));
}

bool CExclusiveConfigFileAnalyzer::IsDirExcluded(std::u16string_view path) const {
    return m_excludedDirs.contains(path);
}

ResultCode CExclusiveConfigFileAnalyzer::LoadReg() {
    FollowEntries(u"reg", [this](std::u16string_view line) {
        RegEntry entry;
        if (const ResultCode rc = ParseRegEntry(line, entry); Failed(rc)) return PassQuiet(rc);
        m_excludedRegs.emplace(entry.root, entry.key);
        return kSuccess;
    });
    return kSuccess;
}

ResultCode CExclusiveConfigFileAnalyzer::LoadDir() {
    FollowEntries(u"dir", [this](std::u16string_view line) {
        std::u16string path;
        if (const ResultCode rc = FormatDir(line, path); Failed(rc)) return PassQuiet(rc);
        if (!path.empty()) m_excludedDirs.insert(std::move(path));
        return kSuccess;
    });
    return kSuccess;
}

}  // namespace roundup
