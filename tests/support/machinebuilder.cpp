#include "tests/support/machinebuilder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/filesystem.h"
#include "platform/recorded/memorysource.h"
#include "platform/recorded/recordedmachine.h"
#include "platform/recorded/registry/registrystore.h"
#include "platform/recorded/winpath.h"

namespace roundup {

namespace {

constexpr std::pair<std::u16string_view, std::u16string_view> kShortRoots[] = {
    {u"HKLM", u"HKEY_LOCAL_MACHINE"}, {u"HKCU", u"HKEY_CURRENT_USER"},   {u"HKU", u"HKEY_USERS"},
    {u"HKCR", u"HKEY_CLASSES_ROOT"},  {u"HKCC", u"HKEY_CURRENT_CONFIG"},
};

std::u16string FullKeyPath(std::u16string_view path) {
    const std::u16string_view root = path.substr(0, path.find(u'\\'));
    for (const auto& [shortName, name] : kShortRoots) {
        if (root == shortName) return std::u16string(name).append(path.substr(root.size()));
    }
    return std::u16string(path);
}

std::string BytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::string Terminated(std::u16string_view text) { return BytesOf(std::u16string(text) + u'\0'); }

template <class T>
std::string NumberBytes(T number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// Where the source keeps a path of the machine: "C:\Tool" in "drives\c\Tool".
std::u16string SourcePath(std::u16string_view path) {
    WinPath parsed;
    if (ParsePath(path, parsed) != kErrorSuccess) throw std::runtime_error("a file of the builder has no proper path");
    std::u16string result = u"drives\\";
    result.push_back(ToLower(parsed.Drive()));
    if (!parsed.Parts().empty()) result.append(u"\\").append(parsed.Parts());
    return result;
}

std::unique_ptr<HostFolder> OpenHost(const std::string& path) {
    std::unique_ptr<HostFolder> folder;
    if (HostFolder::Open(path, folder) != kErrorSuccess) throw std::runtime_error("cannot open folder " + path);
    return folder;
}

}  // namespace

MachineBuilder::RegistryKey& MachineBuilder::KeyAt(View path) {
    std::u16string full = FullKeyPath(path);
    const auto [found, fresh] = m_keyIndex.try_emplace(full, m_keys.size());
    if (fresh) m_keys.push_back({std::move(full), {}});
    return m_keys[found->second];
}

MachineBuilder& MachineBuilder::Key(View path) {
    (void)KeyAt(path);
    return *this;
}
MachineBuilder& MachineBuilder::Text(View path, View name, View value) {
    return Value(path, name, kRegSz, Terminated(value));
}
MachineBuilder& MachineBuilder::ExpandText(View path, View name, View value) {
    return Value(path, name, kRegExpandSz, Terminated(value));
}
MachineBuilder& MachineBuilder::MultiText(View path, View name, const Names& values) {
    std::string bytes;
    for (const std::u16string& value : values) bytes += Terminated(value);
    return Value(path, name, kRegMultiSz, bytes + Terminated(u""));
}
MachineBuilder& MachineBuilder::Dword(View path, View name, std::uint32_t value) {
    return Value(path, name, kRegDword, NumberBytes(value));
}
MachineBuilder& MachineBuilder::Qword(View path, View name, std::uint64_t value) {
    return Value(path, name, kRegQword, NumberBytes(value));
}
MachineBuilder& MachineBuilder::Binary(View path, View name, std::string_view bytes) {
    return Value(path, name, kRegBinary, bytes);
}
MachineBuilder& MachineBuilder::Value(View path, View name, std::uint32_t type, std::string_view bytes) {
    KeyAt(path).values.push_back({std::u16string(name), type, std::string(bytes)});
    return *this;
}

MachineBuilder& MachineBuilder::File(View path, std::string_view bytes) { return Add(m_files, path, bytes); }
MachineBuilder& MachineBuilder::Folder(View path) { return Add(m_files, path, std::nullopt); }
MachineBuilder& MachineBuilder::HostFile(View relativePath, std::string_view bytes) {
    return Add(m_hostFiles, relativePath, bytes);
}
MachineBuilder& MachineBuilder::HostFolder(View relativePath) { return Add(m_hostFiles, relativePath, std::nullopt); }

MachineBuilder& MachineBuilder::Architecture(std::uint16_t architecture) {
    return Set(m_settings.architecture, architecture);
}
MachineBuilder& MachineBuilder::Version(std::uint32_t major, std::uint32_t minor, std::uint32_t build) {
    return Set(m_settings.version, {major, minor, build});
}
MachineBuilder& MachineBuilder::Computer(View name) { return Set(m_settings.computer, name); }
MachineBuilder& MachineBuilder::User(View name) { return Set(m_settings.user, name); }
MachineBuilder& MachineBuilder::Processors(std::uint32_t count) { return Set(m_settings.processors, count); }
MachineBuilder& MachineBuilder::Environment(View name, View value) { return Add(m_settings.environment, name, value); }
MachineBuilder& MachineBuilder::SpecialFolder(std::uint32_t number, View path) {
    return Add(m_settings.folders, number, path);
}
MachineBuilder& MachineBuilder::Reparse(View path, View target) { return Add(m_settings.reparse, path, target); }
MachineBuilder& MachineBuilder::Short(View longPath, View shortPath) {
    return Add(m_settings.shortPaths, longPath, shortPath);
}
MachineBuilder& MachineBuilder::Attributes(View path, std::uint32_t word) {
    return Add(m_settings.attributes, path, word);
}
MachineBuilder& MachineBuilder::Group(View group, const Names& members) {
    return Add(m_settings.groups, group, members);
}
MachineBuilder& MachineBuilder::Accounts(View pathOrKey, const Names& names) {
    return Add(m_settings.accounts, pathOrKey, names);
}
MachineBuilder& MachineBuilder::String(View source, View text) { return Add(m_settings.strings, source, text); }
MachineBuilder& MachineBuilder::Volume(char16_t letter, View fileSystem) {
    return Add(m_settings.volumes, ToUpper(letter), fileSystem);
}

MachineBuilder& MachineBuilder::DenyKey(View path) { return Add(m_memoryOnly.deniedKeys, FullKeyPath(path)); }
MachineBuilder& MachineBuilder::ReadOnlyKey(View path) { return Add(m_memoryOnly.readOnlyKeys, FullKeyPath(path)); }
MachineBuilder& MachineBuilder::DenyFile(View path) { return Add(m_memoryOnly.deniedFiles, path); }
MachineBuilder& MachineBuilder::ReadOnlyFile(View path) {
    return Attributes(path, kAttributeArchive | kAttributeReadOnly);
}
MachineBuilder& MachineBuilder::RealTempFolder(std::string folder) {
    return Set(m_memoryOnly.tempFolder, std::move(folder));
}
MachineBuilder& MachineBuilder::RealHostFolder(std::string folder) {
    return Set(m_memoryOnly.hostFolder, std::move(folder));
}
MachineBuilder& MachineBuilder::WriteLimit(std::uint64_t bytes) { return Set(m_memoryOnly.writeLimit, bytes); }
MachineBuilder& MachineBuilder::DebugText(std::vector<std::u16string>& lines) {
    return Set(m_memoryOnly.debugText, &lines);
}

std::unique_ptr<Machine> MachineBuilder::Build() const {
    MachineParts parts;
    parts.settings = m_settings;
    parts.registry =
        std::make_unique<RegistryStore>(m_settings.Is64Bit() ? RegistryLayout::Windows64 : RegistryLayout::Windows32);
    for (const RegistryKey& key : m_keys) {
        (void)parts.registry->CreateKey(key.path);
        for (const RegistryValue& value : key.values) {
            (void)parts.registry->SetValue(key.path, value.name, value.type, value.data.data(), value.data.size());
        }
    }
    for (const std::u16string& path : m_memoryOnly.readOnlyKeys) {
        (void)parts.registry->SetAccess(path, KeyAccess::ReadOnly);
    }
    for (const std::u16string& path : m_memoryOnly.deniedKeys) {
        (void)parts.registry->SetAccess(path, KeyAccess::Denied);
    }

    auto source = std::make_unique<MemorySource>();
    std::u16string letters = u"c";
    const auto add = [&](const std::u16string& path, const std::optional<std::string>& bytes) {
        if (letters.find(path[7]) == std::u16string::npos) letters.push_back(path[7]);
        if (bytes) {
            source->AddFile(path, *bytes);
        } else {
            source->AddFolder(path);
        }
    };
    add(u"drives\\c", std::nullopt);
    for (const auto& [path, bytes] : m_files) add(SourcePath(path), bytes);
    for (const auto& [path, bytes] : m_hostFiles) {
        add(u"drives\\c\\" + std::u16string(kHostFolderName) + u"\\" + path, bytes);
    }
    for (const char16_t letter : letters)
        parts.drives.emplace_back(ToUpper(letter), u"drives\\" + std::u16string(1, letter));
    parts.files = std::move(source);
    if (m_memoryOnly.tempFolder) parts.tempFolder = OpenHost(*m_memoryOnly.tempFolder);
    if (m_memoryOnly.hostFolder) parts.hostFolder = OpenHost(*m_memoryOnly.hostFolder);
    parts.deniedFiles = m_memoryOnly.deniedFiles;
    parts.writeLimit = m_memoryOnly.writeLimit;
    if (m_memoryOnly.debugText != nullptr) {
        parts.sinks.debug = [lines = m_memoryOnly.debugText](std::u16string_view text) { lines->emplace_back(text); };
    }
    return std::make_unique<RecordedMachine>(std::move(parts));
}

}  // namespace roundup
