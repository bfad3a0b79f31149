// The picture of the database server on this machine, made from nothing for each call and not kept.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace roundup {

using SqlTexts = std::vector<std::u16string>;

// In the order of their keys, code unit by code unit; the cache file has them in it.
template <class Value>
using SqlMap = std::map<std::u16string, Value>;

// A database engine. The texts below SystemFiles are what the registry says, without backslashes at their ends.
struct SqlInstanceInfo {
    std::u16string InstanceName;
    std::u16string InstanceId;  // the name of the instance's own key
    std::u16string RootFolder;  // the folder of the instance, from SQLPath
    SqlTexts SystemFiles;       // files of the system folders whose names contain InstanceName
    std::u16string DataDir;
    std::u16string SQLBinRoot;
    std::u16string SQLPath;
    std::u16string ErrorDumpDir;
    std::u16string ErrorLogFile;
    std::u16string WorkingDirectory;
};

struct SqlServerInfo {
    std::u16string GroupComputerName;  // that of a service's "GroupPrefix"
    std::u16string ComputerName;
    SqlMap<std::u16string> SrFolders;  // the one folder "SR", if there is one: key and value are the same path
    std::vector<SqlInstanceInfo> Instances;
    SqlTexts LocalGroups;                 // those with a "$" in their names
    SqlTexts ServiceKeys;                 // services and event sources, below HKEY_LOCAL_MACHINE
    SqlTexts InfFolders;                  // "C:\Windows\Inf\" and a service's name, where that exists
    SqlMap<SqlTexts> FolderAccounts;      // folder or file: the server's accounts in its access list
    SqlMap<SqlTexts> RegistryAccounts;    // the same of keys
    SqlMap<std::u16string> GroupMembers;  // member: the last of LocalGroups that it is in
    SqlTexts PathEntries;                 // parts of the system's path that contain "SQL Server"
};

}  // namespace roundup
