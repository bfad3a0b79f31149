// An offline Windows volume: the system drive of a Windows that is not running, with its hives.
#include <algorithm>

#include "platform/recorded/disksource.h"
#include "platform/recorded/machinesources.h"
#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registrytext.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr const char16_t* kProfileList = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

// Folders of Users that belong to Windows itself.
constexpr std::u16string_view kSystemProfiles[] = {u"Public",         u"Default",      u"Default User",
                                                   u"All Users",      u"defaultuser0", u"LocalService",
                                                   u"NetworkService", u"systemprofile"};

SourceError Fault(const std::string& file, std::string what) {
    return {file, SourceError::Place::None, 0, std::move(what)};
}

// Where hives are mounted, and who hears of those that are not whole.
struct Mounting {
    RegistryStore& store;
    HostFolder& folder;
    TextSink notes;
};

// The hive at that path below the folder, as FindBelow found it.
SourceStatus MountWithLogs(const Mounting& mounting, const std::string& hive, std::u16string_view path) {
    HiveFiles files{mounting.folder.Path() + "/" + hive};
    const std::size_t slash = hive.rfind('/');
    for (const char* ending : {".LOG1", ".LOG2", ".LOG"}) {
        const std::string name = hive.substr(slash + 1) + ending;
        const auto log = FindBelow(mounting.folder, {name}, SourceKind::File, hive.substr(0, slash));
        if (log) files.logs.push_back(mounting.folder.Path() + "/" + *log);
    }
    HiveState state = HiveState::Whole;
    if (SourceStatus status = MountHive(mounting.store, files, path, state)) return status;
    if (state != HiveState::Whole && mounting.notes) {
        mounting.notes(FromUtf8(files.file) + (state == HiveState::Completed
                                                   ? u": completed from its logs\n"
                                                   : u": a write to it had not ended, and no log has the rest\n"));
    }
    return std::nullopt;
}

// A hive of Windows/System32/config; one that is not there is left out unless it is needed.
SourceStatus MountSystemHive(const Mounting& mounting, std::string_view name, std::u16string_view path, bool needed) {
    HostFolder& folder = mounting.folder;
    const auto file = FindBelow(folder, {"Windows", "System32", "config", name}, SourceKind::File);
    if (file) return MountWithLogs(mounting, *file, path);
    if (!needed) return std::nullopt;
    return Fault(folder.Path(), "there is no hive Windows/System32/config/" + std::string(name));
}

SourceStatus MountMachineHives(const Mounting& mounting) {
    const struct {
        std::string_view name;
        std::u16string_view path;
        bool needed;
    } hives[] = {{"SOFTWARE", u"HKEY_LOCAL_MACHINE\\SOFTWARE", true},
                 {"SYSTEM", u"HKEY_LOCAL_MACHINE\\SYSTEM", true},
                 {"SAM", u"HKEY_LOCAL_MACHINE\\SAM", false},
                 {"DEFAULT", u"HKEY_USERS\\.DEFAULT", false}};
    for (const auto& hive : hives) {
        if (SourceStatus status = MountSystemHive(mounting, hive.name, hive.path, hive.needed)) return status;
    }
    return LinkCurrentControlSet(mounting.store);
}

// Names of the folders of Users that hold a user's hive and are not Windows' own, ascending.
std::vector<std::string> FindProfiles(HostFolder& folder) {
    std::vector<std::string> names;
    const auto users = FindBelow(folder, {"Users"}, SourceKind::Folder);
    std::vector<HostEntry> entries;
    if (!users || folder.List(*users, entries) != kErrorSuccess) return names;
    for (const HostEntry& entry : entries) {
        const std::u16string name = FromUtf8(entry.name);
        const bool system = std::any_of(std::begin(kSystemProfiles), std::end(kSystemProfiles),
                                        [&](std::u16string_view own) { return EqualsNoCase(own, name); });
        if (system || entry.kind != SourceKind::Folder) continue;
        if (FindBelow(folder, {"Users", entry.name, "NTUSER.DAT"}, SourceKind::File)) names.push_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

SourceStatus ChooseProfile(HostFolder& folder, const std::string& asked, std::string& chosen) {
    const std::vector<std::string> names = FindProfiles(folder);
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    if (names.empty()) return Fault(folder.Path(), "there is no profile of a user in Users");
    for (const std::string& name : names) {
        const bool fits = asked.empty() ? names.size() == 1 : EqualsNoCase(FromUtf8(name), FromUtf8(asked));
        if (!fits) continue;
        chosen = name;
        return std::nullopt;
    }
    if (asked.empty()) return Fault(folder.Path(), "there are several users, choose one of them: " + list);
    return Fault(folder.Path(), "there is no user \"" + asked + "\" here, only: " + list);
}

// The identifier under which the list of profiles keeps the folder of that name; empty when it is not listed.
std::u16string FindSid(IRegistry& registry, std::u16string_view profile, std::u16string& path) {
    for (const std::u16string& sid : ReadSubKeyNames(registry, kHkeyLocalMachine, kProfileList)) {
        const std::u16string key = std::u16string(kProfileList) + u"\\" + sid;
        const auto image = ReadRegistryText(registry, kHkeyLocalMachine, key.c_str(), u"ProfileImagePath");
        if (!image || !EqualsNoCase(std::u16string_view(*image).substr(image->rfind(u'\\') + 1), profile)) continue;
        path = *image;
        return sid;
    }
    return {};
}

SourceStatus MountUser(const Mounting& mounting, const std::string& profile, std::u16string_view sid) {
    HostFolder& folder = mounting.folder;
    const std::u16string key = u"HKEY_USERS\\" + std::u16string(sid);
    const auto hive = FindBelow(folder, {"Users", profile, "NTUSER.DAT"}, SourceKind::File);
    if (!hive) return Fault(folder.Path(), "the hive of " + profile + " is gone");
    if (SourceStatus status = MountWithLogs(mounting, *hive, key)) return status;
    const auto classes = FindBelow(
        folder, {"Users", profile, "AppData", "Local", "Microsoft", "Windows", "UsrClass.dat"}, SourceKind::File);
    if (!classes) return std::nullopt;
    // The key that the system shows as <sid>_Classes is this one; a hive mounted under the other name would be no part
    // of the user's Software.
    return MountWithLogs(mounting, *classes, key + u"\\Software\\Classes");
}

// The layout of the registry must be known before anything is mounted, and the registry says it.
SourceStatus FindArchitecture(HostFolder& folder, MachineSettings& settings) {
    RegistryStore scratch;
    const Mounting mounting{scratch, folder, {}};
    if (SourceStatus status = MountSystemHive(mounting, "SYSTEM", u"HKEY_LOCAL_MACHINE\\SYSTEM", true)) return status;
    if (SourceStatus status = LinkCurrentControlSet(scratch)) return status;
    RecordedRegistry registry(scratch);
    ReadSystemSettings(registry, settings);
    return std::nullopt;
}

}  // namespace

SourceStatus LoadOfflineVolume(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options,
                               MachineParts& parts) {
    std::string profile;
    if (SourceStatus status = ChooseProfile(*folder, options.user, profile)) return status;
    if (SourceStatus status = FindArchitecture(*folder, parts.settings)) return status;
    parts.registry = std::make_unique<RegistryStore>(parts.settings.Is64Bit() ? RegistryLayout::Windows64
                                                                              : RegistryLayout::Windows32);
    RegistryStore& store = *parts.registry;
    const Mounting mounting{store, *folder, options.debug};
    if (SourceStatus status = MountMachineHives(mounting)) return status;

    RecordedRegistry registry(store);
    ReadSystemSettings(registry, parts.settings);
    parts.settings.user = FromUtf8(profile);
    std::u16string path;
    const std::u16string sid = FindSid(registry, parts.settings.user, path);
    store.SetUser(sid.empty() ? kDefaultUserSid : std::u16string_view(sid));
    if (SourceStatus status = MountUser(mounting, profile, store.UserSid())) return status;
    // The list may name the folder by a variable; where it is, is known.
    if (path.size() > 2 && path[1] == u':') parts.profile = path;
    parts.registryEnvironment = true;
    parts.registryAccounts = true;
    parts.files = std::make_unique<DiskSource>(folder);
    parts.drives.emplace_back(u'C', u"");
    return std::nullopt;
}

}  // namespace roundup
