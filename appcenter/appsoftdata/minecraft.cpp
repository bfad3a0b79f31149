#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/linereader.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "utility/fileinfo.h"
#include "utility/utf.h"

namespace roundup {

namespace {

ResultCode GetMinecraftProfilesPath(std::u16string& path) {
    if (auto rc = GetRoamingFolder(path); Failed(rc)) return Pass(rc);
    path.append(u".minecraft\\launcher_profiles.json");
    return kSuccess;
}

}  // namespace

// The line is
//     "gameDir" : "D:\\Games\\One",
// and its last colon that of the drive, its last comma behind the closing quote. Where it has other ones, a text comes
// out that is no path.
std::string_view FindGameFolder(std::string_view line) noexcept {
    if (line.find("gameDir") == std::string_view::npos) return {};
    const std::size_t colon = line.rfind(':');
    if (colon == std::string_view::npos || colon == 0) return {};
    const std::string_view rest = line.substr(colon - 1);
    const std::size_t comma = rest.rfind(',');
    if (comma == std::string_view::npos || comma == 0) return {};
    return rest.substr(0, comma - 1);
}

ResultCode LocateMinecraft(const CApp& /*app*/, CAppRuleSet& ruleSet) {
    std::u16string file;
    if (auto rc = GetMinecraftProfilesPath(file); Failed(rc)) return Pass(rc);
    LineReader reader;
    if (auto rc = reader.Open(file.c_str()); Failed(rc)) return Pass(rc);
    for (std::string_view line; reader.Next(line);) {
        const std::u16string folder = Unescape(FromUtf8(FindGameFolder(line)));
        if (!folder.empty() && PathExists(folder.c_str())) ruleSet.AddIncludedDirectory(folder);
    }
    return kSuccess;
}

}  // namespace roundup
