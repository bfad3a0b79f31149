// Makes machines for tests: in memory, or written out as a recorded folder. Without settings it is the machine of an
// empty machine.ini: x64, 10.0.19045, computer RECORDED, user User, four processors, drive C: with NTFS.
//
//     MachineBuilder builder;
//     builder.Text(u"HKLM\\SOFTWARE\\Tool", u"Path", u"C:\\Tool").Dword(u"HKLM\\SOFTWARE\\Tool", u"Size", 12)
//            .File(u"C:\\Tool\\tool.exe", "MZ").Folder(u"C:\\Tool\\empty");
//     const std::unique_ptr<Machine> machine = builder.Build();
//     const MachineScope scope(*machine);
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/machine.h"
#include "platform/recorded/machinesettings.h"
#include "utility/casemap.h"

namespace roundup {

class MachineBuilder {
  public:
    using View = std::u16string_view;
    using Names = std::vector<std::u16string>;

    // Registry. Key paths begin with the root's full name or with HKLM, HKCU, HKU, HKCR, HKCC, and name the key where
    // it stands on disk, so the 32-bit view's data below Wow6432Node. A key comes to be with its first value, or with
    // Key. An empty name is the default value. Texts get their terminator.
    MachineBuilder& Key(View path);
    MachineBuilder& Text(View path, View name, View value);
    MachineBuilder& ExpandText(View path, View name, View value);
    MachineBuilder& MultiText(View path, View name, const Names& values);
    MachineBuilder& Dword(View path, View name, std::uint32_t value);
    MachineBuilder& Qword(View path, View name, std::uint64_t value);
    MachineBuilder& Binary(View path, View name, std::string_view bytes);
    // Any type, bytes as they stand.
    MachineBuilder& Value(View path, View name, std::uint32_t type, std::string_view bytes);

    // Files; the folders on the way come to be with them. Paths begin with a drive letter.
    MachineBuilder& File(View path, std::string_view bytes = {});
    MachineBuilder& Folder(View path);
    // A file of the host folder, such as u"Config\\one.inc". The folder itself is there in any case.
    MachineBuilder& HostFile(View relativePath, std::string_view bytes);
    MachineBuilder& HostFolder(View relativePath);

    // Settings, as the sections of machine.ini.
    MachineBuilder& Architecture(std::uint16_t architecture);
    MachineBuilder& Version(std::uint32_t major, std::uint32_t minor, std::uint32_t build);
    MachineBuilder& Computer(View name);
    MachineBuilder& User(View name);
    MachineBuilder& Processors(std::uint32_t count);
    MachineBuilder& Environment(View name, View value);
    MachineBuilder& SpecialFolder(std::uint32_t number, View path);
    MachineBuilder& Reparse(View path, View target);
    MachineBuilder& Short(View longPath, View shortPath);
    MachineBuilder& Attributes(View path, std::uint32_t word);
    MachineBuilder& Group(View group, const Names& members);
    MachineBuilder& Accounts(View pathOrKey, const Names& names);
    MachineBuilder& String(View source, View text);
    MachineBuilder& Volume(char16_t letter, View fileSystem);

    // What only a machine in memory can have. A denied key or file is there and answers error 5 when opened; a
    // read-only one when it is opened for writing. Subkeys and what lies in a folder are not denied with it.
    MachineBuilder& DenyKey(View path);
    MachineBuilder& ReadOnlyKey(View path);
    MachineBuilder& DenyFile(View path);
    MachineBuilder& ReadOnlyFile(View path);
    // The temporary folder, or the host folder, is this real folder (UTF-8) instead of one in memory.
    MachineBuilder& RealTempFolder(std::string folder);
    MachineBuilder& RealHostFolder(std::string folder);
    // Writing more than so many bytes in all fails with error 112, as on a full disk.
    MachineBuilder& WriteLimit(std::uint64_t bytes);
    // Whatever the machine puts out as debug text is added here; must outlive the machine, written under a lock.
    MachineBuilder& DebugText(std::vector<std::u16string>& lines);

    // A new machine each time; the builder may be used on.
    std::unique_ptr<Machine> Build() const;

    // Writes the same machine out as a recorded folder, which must be empty or absent (UTF-8 path). Throws
    // std::runtime_error when a file cannot be written or the machine has what only one in memory can have.
    void WriteTo(const std::string& folder) const;

  private:
    struct RegistryValue {
        std::u16string name;
        std::uint32_t type;
        std::string data;
    };
    struct RegistryKey {
        std::u16string path;  // with the root's full name
        std::vector<RegistryValue> values;
    };
    struct MemoryOnly {
        Names deniedKeys;
        Names readOnlyKeys;
        Names deniedFiles;
        std::optional<std::string> tempFolder;
        std::optional<std::string> hostFolder;
        std::optional<std::uint64_t> writeLimit;
        std::vector<std::u16string>* debugText = nullptr;
    };

    template <class Field, class Value = Field>
    MachineBuilder& Set(Field& field, Value&& value) {
        field = std::forward<Value>(value);
        return *this;
    }
    template <class List, class... Parts>
    MachineBuilder& Add(List& list, Parts&&... parts) {
        list.emplace_back(std::forward<Parts>(parts)...);
        return *this;
    }
    RegistryKey& KeyAt(View path);
    std::string RegistryText() const;

    MachineSettings m_settings;
    std::vector<RegistryKey> m_keys;  // in order of their making
    std::unordered_map<std::u16string, std::size_t, NoCaseHash, NoCaseEqual> m_keyIndex;
    std::vector<std::pair<std::u16string, std::optional<std::string>>> m_files;      // without bytes: a folder
    std::vector<std::pair<std::u16string, std::optional<std::string>>> m_hostFiles;  // paths below the host folder
    MemoryOnly m_memoryOnly;
};

}  // namespace roundup
