#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "platform/machine.h"
#include "utility/ownedstring.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr const char16_t* kEnvironmentKey = u"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr std::u16string_view kFirstSrFolder = u"C:\\SR";

void FindSrFolder(SqlServerInfo& info) {
    for (const SqlInstanceInfo& instance : info.Instances) {
        if (instance.RootFolder.empty()) continue;
        std::u16string folder(kFirstSrFolder);
        if (!PathExists(folder)) {
            folder[0] = instance.RootFolder[0];
            if (!PathExists(folder)) continue;
        }
        info.SrFolders.try_emplace(folder, folder);
        return;
    }
}

// What stands behind the last ";" is not looked at, and neither is anything behind two in a row.
void ReadPathVariable(SqlServerInfo& info) {
    CWFYRegKey key;
    if (const auto rc = key.Open(kHkeyLocalMachine, kEnvironmentKey, false, true); Failed(rc)) {
        Ignore(rc, u"no path variable");
        return;
    }
    const std::u16string path = SqlValueText(key, u"Path");
    for (std::u16string_view rest = path;;) {
        const std::size_t end = rest.find(u';');
        if (end == std::u16string_view::npos || end == 0) return;
        const std::u16string_view piece = rest.substr(0, end);
        if (ContainsNoCase(piece, u"SQL Server")) info.PathEntries.emplace_back(piece);
        rest.remove_prefix(end + 1);
    }
}

}  // namespace

std::u16string SqlValueText(CWFYRegKey& key, const char16_t* name) {
    OwnedString text;
    Ignore(key.GetString(name, text), u"a missing value is an empty one");
    return text.IsNull() ? std::u16string() : std::u16string(text.Get());
}

std::u16string SqlTrimmedText(CWFYRegKey& key, const char16_t* name) {
    std::u16string text = SqlValueText(key, name);
    while (text.ends_with(u'\\')) text.pop_back();
    return text;
}

bool PathExists(const std::u16string& path) {
    return CurrentMachine().Files().GetAttributes(path.c_str()) != kInvalidAttributes;
}

ResultCode BuildSqlServerInfo(SqlServerInfo& info) {
    if (auto rc = ReadSqlServices(info); Failed(rc)) return Pass(rc);
    if (auto rc = ReadSqlInstances(info); Failed(rc)) return Pass(rc);
    FindSrFolder(info);
    ReadPathVariable(info);
    if (auto rc = ReadSqlSecurity(info); Failed(rc)) return Pass(rc);
    return kSuccess;
}

}  // namespace roundup
