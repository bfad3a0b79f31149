#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/linereader.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// The preferences of the first profile, whose path counts as relative.
ResultCode GetThunderbirdPrefsPath(std::u16string& path) {
    if (auto rc = GetRoamingFolder(path); Failed(rc)) return Pass(rc);
    path.append(u"Thunderbird\\");
    char16_t profile[260] = {};
    const std::uint32_t length = CurrentMachine().Profile().GetString(
        u"Profile0", u"Path", u"", profile, std::size(profile), (path + u"profiles.ini").c_str());
    if (length == 0) return Fail(SmallCode::GeneralFailure);
    path.append(profile).append(u"\\prefs.js");
    if (!PathExists(path.c_str())) return Fail(SmallCode::GeneralFailure);
    return kSuccess;
}

bool Contains(std::string_view line, std::string_view word) { return line.find(word) != std::string_view::npos; }

}  // namespace

ResultCode ExtractPrefPath(std::u16string_view line, std::u16string& path) {
    const std::size_t colon = line.find(u':');
    if (colon == std::u16string_view::npos || colon == 0) return FailQuiet(SmallCode::GeneralFailure);
    const std::u16string_view rest = line.substr(colon - 1);
    const std::size_t bracket = rest.rfind(u')');
    if (bracket == std::u16string_view::npos || bracket == 0) return FailQuiet(SmallCode::GeneralFailure);
    path = Unescape(rest.substr(0, bracket - 1));
    return kSuccess;
}

// The folder of an account takes two lines:
//     user_pref("mail.server.server1.directory", "D:\\Mail\\one");
//     user_pref("mail.server.server1.directory-rel", "[ProfD]../../Mail/one");
// One whose relative form does not climb lies in the profile itself, which belongs to the application anyway.
ResultCode LocateThunderbird(const CApp& /*app*/, CAppRuleSet& ruleSet) {
    std::u16string file;
    if (auto rc = GetThunderbirdPrefsPath(file); Failed(rc)) return Pass(rc);
    LineReader reader;
    if (auto rc = reader.Open(file.c_str()); Failed(rc)) return Pass(rc);
    std::string first;
    std::u16string folder;
    for (std::string_view line; reader.Next(line);) {
        if (!Contains(line, ".directory")) continue;
        first = line;
        if (!reader.Next(line)) break;
        if (!Contains(line, ".directory-rel") || !Contains(line, "../")) continue;
        if (auto rc = ExtractPrefPath(FromUtf8(first), folder); Failed(rc)) {
            Skip(rc);
            continue;
        }
        if (!folder.empty()) ruleSet.AddIncludedDirectory(folder);
    }
    return kSuccess;
}

}  // namespace roundup
