// The picture of the database server on this machine, made from nothing for each call and not kept.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace roundup {

using SqlTexts = std::vector<std::u16string>;

// Entries in the order of their keys, code unit by code unit; the cache file has them in it. Few and made once: a
// list in order does.
template <class Value>
class SqlMap {
  public:
    using Entry = std::pair<std::u16string, Value>;

    // Replaces the value of a key that is there.
    void Set(std::u16string_view key, Value value) {
        const auto place = PlaceOf(key);
        if (IsAt(place, key)) {
            m_entries[place].second = std::move(value);
        } else {
            Insert(place, key, std::move(value));
        }
    }
    // Keeps the value of a key that is there.
    void Add(std::u16string_view key, Value value) {
        const auto place = PlaceOf(key);
        if (!IsAt(place, key)) Insert(place, key, std::move(value));
    }
    const std::vector<Entry>& Entries() const noexcept { return m_entries; }

  private:
    std::size_t PlaceOf(std::u16string_view key) const {
        const auto place =
            std::lower_bound(m_entries.begin(), m_entries.end(), key,
                             [](const Entry& entry, std::u16string_view asked) { return entry.first < asked; });
        return static_cast<std::size_t>(place - m_entries.begin());
    }
    bool IsAt(std::size_t place, std::u16string_view key) const {
        return place < m_entries.size() && m_entries[place].first == key;
    }
    void Insert(std::size_t place, std::u16string_view key, Value value) {
        m_entries.emplace(m_entries.begin() + static_cast<std::ptrdiff_t>(place), key, std::move(value));
    }

    std::vector<Entry> m_entries;
};

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
