#include "msianalyzer/configfileanalyzer.h"

#include <algorithm>
#include <iterator>

#include "msianalyzer/formattedstring.h"
#include "msianalyzer/readconfig.h"
#include "msianalyzer/suitecode.h"
#include "msianalyzer/systemfolderproperty.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/suitenames.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

constexpr std::u16string_view kReg = u"reg";
constexpr std::u16string_view kUninstall = u"uins";

struct RootName {
    std::u16string_view name;
    KeyHandle root;
};
constexpr RootName kRoots[] = {
    {u"HKCU", kHkeyCurrentUser},
    {u"HKLM", kHkeyLocalMachine},
    {u"HKCR", kHkeyClassesRoot},
    {u"HKEY_USERS", kHkeyUsers},
    {u"HKEY_CURRENT_CONFIG", kHkeyCurrentConfig},
};

std::u16string_view TrimBlanks(std::u16string_view text) noexcept {
    while (!text.empty() && text.front() == u' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
    return text;
}

// Takes the text up to the first separator, or all of it, and that separator off the rest; false without one.
bool TakeField(std::u16string_view& rest, char16_t separator, std::u16string_view& field) noexcept {
    const std::size_t at = rest.find(separator);
    field = TrimBlanks(rest.substr(0, at));
    rest = at == rest.npos ? std::u16string_view() : rest.substr(at + 1);
    return at != rest.npos;
}

std::u16string LowerText(std::u16string_view text) {
    std::u16string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), ToLower);
    return lower;
}

}  // namespace

void FindConfigFile(std::u16string_view name, std::u16string& path, bool include) {
    path.clear();
    const std::u16string_view folder = GetExeFolder();
    if (folder.empty()) return;
    const auto inFolder = [folder, include](std::u16string_view stem) {
        return std::u16string(folder).append(u"\\Config\\").append(stem).append(include ? u".INC" : u".EXC");
    };
    path = inFolder(name);
    if (PathExists(path.c_str())) return;
    const char16_t* const suite = SuiteTypeDes(ClassifySuiteCode(name));
    if (suite != nullptr) path = inFolder(suite);
}

ResultCode CConfigFileAnalyzer::ParseFile(const char16_t* path) {
    m_entries.clear();
    if (const ResultCode rc = GetArchitectureBits(m_bits); Failed(rc)) return Pass(rc);
    CReadConfig file;
    if (const ResultCode rc = file.Open(path); Failed(rc)) return Pass(rc);
    for (std::u16string_view line; Succeeded(file.ReadLine(line));) AddLine(line);
    return kSuccess;
}

void CConfigFileAnalyzer::AddLine(std::u16string_view line) {
    std::u16string_view word;
    if (!TakeField(line, u':', word)) return;
    const std::u16string_view value = TrimBlanks(line);
    if (word.empty() || value.empty()) return;
    std::u16string keyword = LowerText(word);
    if (keyword == kReg) {
        std::u16string_view rest = value;
        std::u16string_view root;
        if (!TakeField(rest, u',', root) || root.empty()) return;
        if (LowerText(root) == kUninstall) keyword = kUninstall;
    }
    m_entries.emplace_back(std::move(keyword), value);
}

ResultCode CConfigFileAnalyzer::ParseReg(std::u16string_view line, std::u16string_view& root, std::u16string_view& key,
                                         std::u16string_view& name, std::u16string_view& data) const {
    root = key = name = data = {};
    if (!TakeField(line, u',', root) || root.empty()) return Fail(SmallCode::GeneralFailure);
    const bool more = TakeField(line, u',', key);
    if (key.empty()) return Fail(SmallCode::GeneralFailure);
    if (more && TakeField(line, u',', name)) data = TrimBlanks(line);
    return kSuccess;
}

ResultCode CConfigFileAnalyzer::Expand(std::u16string_view line, std::u16string& path) const {
    std::u16string text;
    const ResultCode rc = CFormattedString(m_analyzer).Format(line, text);
    path = TrimBlanks(text);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

ResultCode CConfigFileAnalyzer::FormatFile(std::u16string_view line, std::u16string& path) const {
    return Expand(line, path);
}

ResultCode CConfigFileAnalyzer::FormatDir(std::u16string_view line, std::u16string& path) const {
    return Expand(line, path);
}

ResultCode CConfigFileAnalyzer::ParseDriver(std::u16string_view line, std::u16string_view& first,
                                            std::u16string& second, std::u16string_view& third) const {
    third = {};
    second.clear();
    if (!TakeField(line, u',', first) || first.empty()) return Fail(SmallCode::GeneralFailure);
    std::u16string_view path;
    if (TakeField(line, u',', path)) third = TrimBlanks(line);
    if (const ResultCode rc = Expand(path, second); Failed(rc)) return Pass(rc);
    return second.empty() ? Fail(SmallCode::GeneralFailure) : kSuccess;
}

bool CConfigFileAnalyzer::HasEntries(std::u16string_view keyword) const noexcept {
    return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.first == keyword; });
}

ResultCode CConfigFileAnalyzer::ParseRegEntry(std::u16string_view line, RegEntry& entry) const {
    std::u16string_view text;
    if (const ResultCode rc = ParseReg(line, text, entry.key, entry.name, entry.data); Failed(rc)) return Pass(rc);
    const RootName* const found =
        std::find_if(std::begin(kRoots), std::end(kRoots), [text](const RootName& name) { return name.name == text; });
    if (found == std::end(kRoots)) return Fail(SmallCode::GeneralFailure);
    entry.root = found->root;
    return kSuccess;
}

}  // namespace roundup
