#include "platform/recorded/recordedmachine.h"

namespace roundup {

namespace {

constexpr std::uint32_t kWindowsFolder = 36;  // CSIDL_WINDOWS

// Nothing is added from here on but what the machine's own processes write.
std::unique_ptr<RegistryStore> Settled(std::unique_ptr<RegistryStore> registry) {
    registry->Settle();
    return registry;
}

std::u16string DriveOf(const ShellFolders& folders) { return folders.Path(kWindowsFolder).substr(0, 2); }

}  // namespace

RecordedMachine::RecordedMachine(MachineParts parts)
    : m_settings(std::move(parts.settings)),
      m_store(Settled(std::move(parts.registry))),
      m_registry(*m_store),
      m_folders(m_registry, m_settings, parts.profile, parts.registryEnvironment, m_environment),
      m_hostFolder(DriveOf(m_folders) + u"\\" + std::u16string(kHostFolderName)),
      m_hostExecutable(m_hostFolder + u"\\" + parts.programName + u".exe"),
      m_tree(std::move(parts.files)),
      m_files(m_tree, m_budget, m_settings.volumes),
      m_profile(m_files, m_folders.Path(kWindowsFolder)),
      m_shell(m_settings, m_folders, m_hostExecutable, m_environment, m_files, m_registry),
      m_installer(m_registry, m_files),
      m_accounts(parts.registryAccounts ? std::make_unique<OfflineAccounts>(m_registry, m_settings.computer) : nullptr),
      m_security(m_settings, m_files, m_registry, m_accounts.get()),
      m_system(m_settings, m_environment, {m_folders.Path(kWindowsFolder), m_folders.TempFolder(), m_hostExecutable},
               std::move(parts.sinks)),
      m_closedLibraries(m_files) {
    if (parts.writeLimit) m_budget.Limit(*parts.writeLimit);
    SetUpDrives(parts);
    SetUpMapped(std::move(parts.tempFolder), m_folders.TempFolder(), m_mappedTemp);
    SetUpMapped(std::move(parts.hostFolder), m_hostFolder, m_mappedHost);
    m_profile.ShareWriters(m_mappedHost.get());
    SetUpSpecialPaths(parts);
}

void RecordedMachine::SetUpDrives(const MachineParts& parts) {
    for (const auto& [letter, folder] : parts.drives) {
        FileEntry* entry = &m_tree.Root();
        for (std::u16string_view rest = folder; entry != nullptr && !rest.empty();) {
            Win32Error error = kErrorSuccess;
            entry = m_tree.FolderOf(*entry).Find(TakePart(rest), error);
            if (entry != nullptr && entry->kind == SourceKind::Link) entry = m_tree.FollowLink(*entry, error);
            if (entry != nullptr && entry->kind != SourceKind::Folder) entry = nullptr;
        }
        if (entry != nullptr) m_tree.SetDrive(letter, *entry);
    }
    if (!m_tree.HasDrive(u'C')) m_tree.AddDrive(u'C');
    for (const auto& [letter, fileSystem] : m_settings.volumes) {
        if (!m_tree.HasDrive(letter)) m_tree.AddDrive(letter);
    }
}

// A folder that is mapped hides the one that the source has there; one in memory shows it.
void RecordedMachine::SetUpMapped(std::unique_ptr<HostFolder> folder, const std::u16string& path,
                                  std::unique_ptr<MappedFolder>& mapped) {
    WinPath parsed;
    if (ParsePath(path, parsed) != kErrorSuccess) return;
    if (!folder) {
        (void)m_tree.MakeFolder(parsed);
        return;
    }
    mapped = std::make_unique<MappedFolder>(std::move(folder), m_budget);
    m_tree.FolderOf(m_tree.CoverFolder(parsed)).Map(mapped.get());
}

FileEntry* RecordedMachine::EntryAt(const std::u16string& path) {
    WinPath parsed;
    if (ParsePath(path, parsed) != kErrorSuccess) return nullptr;
    const FileTree::Found found = m_tree.Find(parsed, FileTree::Last::AsItIs);
    return found.error == kErrorSuccess && found.mapped == nullptr ? found.entry : nullptr;
}

// Settings about a path that does not exist say nothing, but for mount points, which come to be with them. Shorter
// paths come first, so that a short name of a folder is known when one below it is set.
void RecordedMachine::SetUpSpecialPaths(const MachineParts& parts) {
    const auto extrasOf = [](FileEntry& entry) -> EntryExtras& {
        if (!entry.extras) entry.extras = std::make_shared<EntryExtras>();
        return *entry.extras;
    };
    for (const auto& [path, target] : m_settings.reparse) {
        WinPath parsed;
        if (ParsePath(path, parsed) != kErrorSuccess || parsed.Parts().empty()) continue;
        FileEntry& entry = m_tree.CoverFolder(parsed);
        entry.attributes |= kAttributeReparsePoint;
        extrasOf(entry).reparseTarget = target;
    }
    for (const auto& [path, shortPath] : m_settings.shortPaths) {
        WinPath parsedLong;
        WinPath parsedShort;
        if (ParsePath(path, parsedLong) != kErrorSuccess || ParsePath(shortPath, parsedShort) != kErrorSuccess)
            continue;
        std::vector<FileEntry*> trail;
        if (m_tree.Find(parsedLong, FileTree::Last::AsItIs, &trail).error != kErrorSuccess) continue;
        std::u16string_view rest = parsedShort.Parts();
        for (FileEntry* entry : trail) {
            const std::u16string_view name = TakePart(rest);
            if (name.empty() || EqualsNoCase(name, entry->name)) continue;
            entry->parent->AddShortName(name, *entry);
        }
    }
    for (const auto& [path, word] : m_settings.attributes) {
        if (FileEntry* entry = EntryAt(path)) entry->attributes = word;
    }
    for (const std::u16string& path : parts.deniedFiles) {
        if (FileEntry* entry = EntryAt(path)) extrasOf(*entry).denied = true;
    }
}

}  // namespace roundup
