// What the registry says of the services and the instances of the database server.
#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "platform/machine.h"
#include "utility/filesearch.h"
#include "utility/ownedstring.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr const char16_t* kServicesKey = u"SOFTWARE\\Microsoft\\Microsoft SQL Server\\Services";
constexpr const char16_t* kInstanceNamesKey = u"SOFTWARE\\Microsoft\\Microsoft SQL Server\\Instance Names";
constexpr std::u16string_view kServerKey = u"SOFTWARE\\Microsoft\\Microsoft SQL Server\\";

std::u16string ReadComputerName() {
    char16_t name[260] = {};
    const std::uint32_t length = CurrentMachine().System().GetComputerName(name, std::size(name));
    return length < std::size(name) ? std::u16string(name, length) : std::u16string();
}

// The computer's name stands between two "$"; the character in front of the second is left out with it.
std::u16string_view ComputerOfGroupPrefix(std::u16string_view behindFirst) {
    const std::size_t second = behindFirst.find(u'$');
    if (second == std::u16string_view::npos) return behindFirst;
    return behindFirst.substr(0, second == 0 ? 0 : second - 1);
}

// Ends a walk over subkeys; one that cannot be read ends it too.
bool NextSubkey(CWFYRegKey& key, OwnedString& name) { return Succeeded(key.EnumKey(name)); }

// File system redirection of the calling thread, off for the scope.
class RedirectionOff {
  public:
    RedirectionOff() : m_isOff(CurrentMachine().Files().DisableRedirection(m_state)) {}
    ~RedirectionOff() {
        if (m_isOff) CurrentMachine().Files().RevertRedirection(m_state);
    }
    RedirectionOff(const RedirectionOff&) = delete;
    RedirectionOff& operator=(const RedirectionOff&) = delete;

  private:
    void* m_state = nullptr;
    const bool m_isOff;
};

enum class Matches { Files, Folders };

// Adds the entries of the folder whose names contain that name.
void FindMatches(Matches wanted, const std::u16string& folder, std::u16string_view name, SqlTexts& found) {
    const RedirectionOff redirectionOff;
    for (FileSearch search((folder + u"\\*").c_str()); search.Next();) {
        if (search.IsReparseFolder() || search.IsFolder() != (wanted == Matches::Folders)) continue;
        if (!ContainsNoCase(search.Name(), name)) continue;
        found.push_back(folder + u"\\" + std::u16string(search.Name()));
    }
}

// The path up to the backslash behind the first "."; whole without such a place.
std::u16string RootOfSqlPath(const std::u16string& path) {
    const std::size_t dot = path.find(u'.');
    return dot == std::u16string::npos ? path : path.substr(0, path.find(u'\\', dot));
}

enum class InstanceAnswer { Read, PassedOver, EndsSection };

// The keys of one instance. Those of a server that is no database engine lack the last of them.
InstanceAnswer ReadInstanceKeys(SqlInstanceInfo& instance) {
    const std::u16string path = std::u16string(kServerKey) + instance.InstanceId;
    CWFYRegKey key;
    if (auto rc = key.Open(kHkeyLocalMachine, (path + u"\\Setup").c_str(), true, false); Failed(rc)) {
        Skip(rc);
        return InstanceAnswer::EndsSection;
    }
    instance.SQLBinRoot = SqlTrimmedText(key, u"SQLBinRoot");
    instance.SQLPath = SqlTrimmedText(key, u"SQLPath");
    instance.DataDir = SqlTrimmedText(key, u"DataDir");
    if (std::u16string root = SqlTrimmedText(key, u"SQLDataRoot"); !root.empty()) instance.DataDir = std::move(root);

    if (auto rc = key.Open(kHkeyLocalMachine, (path + u"\\CPE").c_str(), true, false); Failed(rc)) {
        Skip(rc);
        return InstanceAnswer::EndsSection;
    }
    instance.ErrorDumpDir = SqlTrimmedText(key, u"ErrorDumpDir");

    if (auto rc = key.Open(kHkeyLocalMachine, (path + u"\\SQLServerAgent").c_str(), true, false); Failed(rc)) {
        Ignore(rc, u"a server of another kind");
        return InstanceAnswer::PassedOver;
    }
    instance.ErrorLogFile = SqlTrimmedText(key, u"ErrorLogFile");
    instance.WorkingDirectory = SqlTrimmedText(key, u"WorkingDirectory");
    return InstanceAnswer::Read;
}

// The next value with a name and a text; false at the end, which the first without one of them is too.
bool NextInstance(CWFYRegKey& section, SqlInstanceInfo& instance) {
    RegValueView value;
    for (;;) {
        const ResultCode rc = section.EnumValueView(value);
        if (Win32Of(rc) == kErrorMoreData) continue;
        if (Failed(rc)) return false;
        instance.InstanceName = value.Name().substr(0, value.Name().find(u'\0'));
        instance.InstanceId = value.Text();
        return !instance.InstanceName.empty() && !instance.InstanceId.empty();
    }
}

// rc: that of the last instance so far, which a value that is passed over leaves as it is.
void ReadSection(CWFYRegKey& section, SqlServerInfo& info, ResultCode& rc) {
    for (SqlInstanceInfo instance; NextInstance(section, instance); instance = {}) {
        const InstanceAnswer answer = ReadInstanceKeys(instance);
        if (answer == InstanceAnswer::PassedOver) continue;
        if (answer == InstanceAnswer::EndsSection) {
            rc = Fail(SmallCode::GeneralFailure);
            return;
        }
        instance.RootFolder = RootOfSqlPath(instance.SQLPath);
        for (const char16_t* folder : {u"C:\\Windows\\System32", u"C:\\Windows\\SysWOW64"}) {
            FindMatches(Matches::Files, folder, instance.InstanceName, instance.SystemFiles);
        }
        info.Instances.push_back(std::move(instance));
        rc = kSuccess;
    }
}

}  // namespace

ResultCode ReadSqlServices(SqlServerInfo& info) {
    info.ComputerName = ReadComputerName();
    CWFYRegKey services;
    if (auto rc = services.Open(kHkeyLocalMachine, kServicesKey, true, false); Failed(rc)) {
        return Fail(SmallCode::GeneralFailure, rc.Value());
    }
    for (OwnedString name; NextSubkey(services, name);) {
        CWFYRegKey service;
        if (Failed(service.Open(services.GetKeyHandle(), name.Text(), true, false))) continue;
        const std::u16string prefix = SqlValueText(service, u"GroupPrefix");
        const std::size_t first = prefix.find(u'$');
        if (first == std::u16string::npos) continue;
        info.GroupComputerName = ComputerOfGroupPrefix(std::u16string_view(prefix).substr(first + 1));
    }
    return kSuccess;
}

ResultCode ReadSqlInstances(SqlServerInfo& info) {
    CWFYRegKey names;
    if (auto rc = names.Open(kHkeyLocalMachine, kInstanceNamesKey, true, false); Failed(rc)) {
        return Fail(SmallCode::GeneralFailure, rc.Value());
    }
    ResultCode result = kSuccess;
    for (OwnedString name; NextSubkey(names, name);) {
        CWFYRegKey section;
        if (Failed(section.Open(names.GetKeyHandle(), name.Text(), true, false))) continue;
        ReadSection(section, info, result);
    }
    return result;
}

}  // namespace roundup
