// A Wine prefix: system.reg, user.reg and userdef.reg, drive_c, dosdevices.
#include "platform/recorded/disksource.h"
#include "platform/recorded/machinesources.h"
#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registrytext.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::u16string_view kProfileList = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\";

// The path in the prefix that a link "d:" of dosdevices shows, by its text; nothing when it leads out of the prefix.
std::optional<std::u16string> DriveTarget(HostFolder& folder, const std::string& link) {
    std::string text;
    if (folder.ReadLink(link, text) != kErrorSuccess) return std::nullopt;
    const LinkTarget target = ParseLinkText(text, folder.Path());
    if (target.outside) return std::nullopt;
    std::vector<std::u16string> parts;
    if (!target.fromRoot) parts.emplace_back(u"dosdevices");
    for (const std::u16string& part : target.parts) {
        if (part != u"..") {
            parts.push_back(part);
        } else if (parts.empty()) {
            return std::nullopt;
        } else {
            parts.pop_back();
        }
    }
    std::u16string path;
    for (const std::u16string& part : parts) path.append(path.empty() ? u"" : u"\\").append(part);
    return path;
}

void FindDrives(HostFolder& folder, MachineParts& parts) {
    parts.drives.emplace_back(u'C', u"drive_c");
    std::vector<HostEntry> devices;
    if (folder.List("dosdevices", devices) != kErrorSuccess) return;
    for (const HostEntry& entry : devices) {
        if (entry.name.size() != 2 || entry.name[1] != ':' || entry.kind != SourceKind::Link) continue;
        const char16_t letter = ToUpper(static_cast<char16_t>(entry.name[0] & 0x7F));
        if (letter < u'A' || letter > u'Z') continue;
        // What leads out of the prefix, as "z:" does, is a drive that the machine does not have.
        if (auto target = DriveTarget(folder, "dosdevices/" + entry.name)) {
            parts.drives.emplace_back(letter, std::move(*target));
        }
    }
}

// The user that user.reg belongs to: by what Wine wrote there when it last ran, else by the list of profiles.
void FindUser(RegistryStore& store, IRegistry& registry, MachineParts& parts) {
    const std::u16string list = std::u16string(kProfileList) + store.UserSid();
    std::optional<std::u16string> profile =
        ReadRegistryText(registry, kHkeyCurrentUser, u"Volatile Environment", u"USERPROFILE");
    if (!profile) profile = ReadRegistryText(registry, kHkeyLocalMachine, list.c_str(), u"ProfileImagePath");
    std::optional<std::u16string> name =
        ReadRegistryText(registry, kHkeyCurrentUser, u"Volatile Environment", u"USERNAME");
    if (!name && profile) name = profile->substr(profile->rfind(u'\\') + 1);
    if (name && !name->empty()) parts.settings.user = *name;
    if (profile) parts.profile = *profile;
}

}  // namespace

SourceStatus LoadWineSource(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options,
                            MachineParts& parts) {
    parts.registry = std::make_unique<RegistryStore>();
    if (SourceStatus status = LoadWinePrefix(*parts.registry, folder->Path())) return status;
    RecordedRegistry registry(*parts.registry);
    ReadSystemSettings(registry, parts.settings);
    const bool is32Bit = parts.registry->Layout() == RegistryLayout::Wine32;
    parts.settings.architecture = is32Bit ? kArchitectureIntel : kArchitectureAmd64;
    FindUser(*parts.registry, registry, parts);
    if (!options.user.empty() && !EqualsNoCase(FromUtf8(options.user), parts.settings.user)) {
        return WrongUser(folder->Path(), options.user, parts.settings.user);
    }
    parts.registryEnvironment = true;
    parts.files = std::make_unique<DiskSource>(folder, true);
    FindDrives(*folder, parts);
    return std::nullopt;
}

}  // namespace roundup
