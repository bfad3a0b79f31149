// Services, local groups and permissions of the database server.
#include <algorithm>
#include <utility>

#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/filesearch.h"
#include "utility/formattext.h"
#include "utility/ownedstring.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr const char16_t* kServiceKeys[] = {u"SYSTEM\\CurrentControlSet\\services",
                                            u"SYSTEM\\CurrentControlSet\\services\\eventlog\\application"};
constexpr std::u16string_view kInfFolder = u"C:\\Windows\\Inf\\";

bool IsSqlService(CWFYRegKey& parent, const OwnedString& name) {
    if (ContainsNoCase(name, u"MSSQL")) return true;
    CWFYRegKey service;
    if (Failed(service.Open(parent.GetKeyHandle(), name.Text(), true, false))) return false;
    std::u16string file = SqlValueText(service, u"ImagePath");
    if (file.empty()) file = SqlValueText(service, u"EventMessageFile");
    return ContainsNoCase(file, u"Microsoft SQL Server");
}

ResultCode ScanServiceKey(const char16_t* path, SqlServerInfo& info) {
    CWFYRegKey services;
    if (auto rc = services.Open(kHkeyLocalMachine, path, true, false); Failed(rc)) {
        return Fail(SmallCode::GeneralFailure, rc.Value());
    }
    for (OwnedString name; Succeeded(services.EnumKey(name)) && name.Text()[0] != u'\0';) {
        if (!IsSqlService(services, name)) continue;
        info.ServiceKeys.push_back(FormatText(u"%s\\%s", path, name.Text()));
        std::u16string folder = std::u16string(kInfFolder) + name.Text();
        if (PathExists(folder)) info.InfFolders.push_back(std::move(folder));
    }
    return kSuccess;
}

ResultCode ReadLocalGroups(SqlServerInfo& info) {
    ISecurity& security = CurrentMachine().Security();
    SqlTexts groups;
    if (const Win32Error error = security.GetLocalGroups(groups); error != kErrorSuccess) {
        return Fail(SmallCode::GeneralFailure, error);
    }
    for (std::u16string& group : groups) {
        if (group.find(u'$') == std::u16string::npos) continue;
        SqlTexts members;
        if (const Win32Error error = security.GetGroupMembers(group.c_str(), members); error == kErrorSuccess) {
            for (const std::u16string& member : members) info.GroupMembers.insert_or_assign(member, group);
        } else {
            SkipIf(error);
        }
        info.LocalGroups.push_back(std::move(group));
    }
    return kSuccess;
}

void AddFileAccounts(const std::u16string& path, SqlServerInfo& info) {
    if (SqlTexts accounts = FindSqlAccounts(path, SqlObjectKind::FileOrFolder); !accounts.empty()) {
        info.FolderAccounts.try_emplace(path, std::move(accounts));
    }
}

// The folder of each instance and the folders in it. One that cannot be listed ends it for all of them.
void ReadFolderAccounts(SqlServerInfo& info) {
    for (const SqlInstanceInfo& instance : info.Instances) {
        const std::u16string& folder = instance.SQLPath;
        if (folder.empty()) continue;
        AddFileAccounts(folder, info);
        FileSearch search((folder + u"\\*").c_str());
        if (search.Error() != kErrorSuccess) {
            SkipIf(search.Error());
            return;
        }
        while (search.Next()) {
            if (!search.IsFolder() || search.IsReparseFolder()) continue;
            AddFileAccounts(folder + u"\\" + std::u16string(search.Name()), info);
        }
    }
}

void ReadKeyAccounts(SqlServerInfo& info) {
    static constexpr std::u16string_view kOwnKeys[] = {u"\\MSSQLServer", u"\\MSSQLServer\\SuperSocketNetLib"};
    static constexpr std::u16string_view kServer = u"SOFTWARE\\Microsoft\\Microsoft SQL Server\\";
    static constexpr std::u16string_view kMicrosoft = u"SOFTWARE\\Microsoft\\";
    for (const SqlInstanceInfo& instance : info.Instances) {
        if (instance.InstanceName.empty() || instance.InstanceId.empty()) continue;
        const std::pair<std::u16string_view, std::u16string_view> places[] = {{kServer, instance.InstanceId},
                                                                              {kServer, instance.InstanceName},
                                                                              {kMicrosoft, instance.InstanceName},
                                                                              {kMicrosoft, instance.InstanceId}};
        for (const auto& [parent, name] : places) {
            for (const std::u16string_view own : kOwnKeys) {
                std::u16string path(parent);
                path.append(name).append(own);
                SqlTexts accounts = FindSqlAccounts(u"MACHINE\\" + path, SqlObjectKind::RegistryKey);
                if (!accounts.empty()) info.RegistryAccounts.insert_or_assign(path, std::move(accounts));
            }
        }
    }
}

void ReadSrAccounts(SqlServerInfo& info) {
    if (info.SrFolders.empty()) return;
    const std::u16string folder = info.SrFolders.begin()->second;
    for (FileSearch search((folder + u"\\*").c_str()); search.Next();) {
        if (!search.IsFolder()) AddFileAccounts(folder + u"\\" + std::u16string(search.Name()), info);
    }
}

// Opens the key that a path such as MACHINE\SOFTWARE names and asks it; full access, in the 64-bit view.
ResultCode ReadAccountsOfKey(std::u16string_view path, SqlTexts& accounts) {
    static constexpr std::pair<std::u16string_view, KeyHandle> kRoots[] = {{u"MACHINE", kHkeyLocalMachine},
                                                                           {u"USERS", kHkeyUsers},
                                                                           {u"CURRENT_USER", kHkeyCurrentUser},
                                                                           {u"CLASSES_ROOT", kHkeyClassesRoot}};
    const std::size_t cut = path.find(u'\\');
    if (cut == std::u16string_view::npos || cut + 1 == path.size()) return Fail(SmallCode::BadArgument, cut);
    const auto root = std::find_if(std::begin(kRoots), std::end(kRoots),
                                   [&](const auto& known) { return EqualsNoCase(known.first, path.substr(0, cut)); });
    if (root == std::end(kRoots)) return Fail(SmallCode::BadArgument);

    Machine& machine = CurrentMachine();
    const std::u16string subKey(path.substr(cut + 1));
    KeyHandle key = 0;
    Win32Error error = machine.Registry().OpenKey(root->second, subKey.c_str(), kKeyAllAccess | kKeyWow64Key64, key);
    if (error != kErrorSuccess) return Fail(SmallCode::GeneralFailure, error);
    error = machine.Security().GetKeyAccounts(key, accounts);
    machine.Registry().CloseKey(key);
    if (error != kErrorSuccess) return Fail(SmallCode::GeneralFailure, error);
    return kSuccess;
}

ResultCode ReadAccounts(std::u16string_view path, SqlObjectKind kind, SqlTexts& accounts) {
    if (path.empty()) return Fail(SmallCode::GeneralFailure);
    if (kind == SqlObjectKind::RegistryKey) return ReadAccountsOfKey(path, accounts);
    const Win32Error error = CurrentMachine().Security().GetFileAccounts(std::u16string(path).c_str(), accounts);
    if (error != kErrorSuccess) return Fail(SmallCode::GeneralFailure, error);
    return kSuccess;
}

}  // namespace

SqlTexts FindSqlAccounts(std::u16string_view path, SqlObjectKind kind) {
    SqlTexts accounts;
    if (Failed(ReadAccounts(path, kind, accounts))) return {};
    std::erase_if(accounts, [](const std::u16string& name) {
        return !ContainsNoCase(name, u"SQL") && !ContainsNoCase(name, u"$");
    });
    std::sort(accounts.begin(), accounts.end());
    accounts.erase(std::unique(accounts.begin(), accounts.end()), accounts.end());
    return accounts;
}

ResultCode ReadSqlSecurity(SqlServerInfo& info) {
    for (const char16_t* path : kServiceKeys) {
        if (auto rc = ScanServiceKey(path, info); Failed(rc)) return Pass(rc);
    }
    const ResultCode result = ReadLocalGroups(info);
    ReadFolderAccounts(info);
    ReadKeyAccounts(info);
    ReadSrAccounts(info);
    return result;
}

}  // namespace roundup
