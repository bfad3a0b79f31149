// A recorded folder: machine.ini, registry/*.reg, drives/<letter>, host.
#include "platform/recorded/disksource.h"
#include "platform/recorded/machinesources.h"
#include "platform/recorded/registry/registrysources.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::uint64_t kLargestSettings = 0x1000000;

}  // namespace

SourceStatus LoadRecordedFolder(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options,
                                MachineParts& parts) {
    std::string text;
    if (SourceStatus status = ReadWhole(*folder, "machine.ini", kLargestSettings, text)) return status;
    const std::string file = folder->Path() + "/machine.ini";
    if (SourceStatus status = ReadMachineSettings(text, file, parts.settings)) return status;
    if (!options.user.empty() && !EqualsNoCase(FromUtf8(options.user), parts.settings.user)) {
        return WrongUser(folder->Path(), options.user, parts.settings.user);
    }

    const bool is64Bit = parts.settings.Is64Bit();
    parts.registry = std::make_unique<RegistryStore>(is64Bit ? RegistryLayout::Windows64 : RegistryLayout::Windows32);
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (folder->Query("registry", kind, size) == kErrorSuccess) {
        const std::string registry = folder->Path() + "/registry";
        if (kind != SourceKind::Folder) return SourceError{registry, SourceError::Place::None, 0, "is no folder"};
        if (SourceStatus status = LoadRegTextFolder(*parts.registry, registry)) return status;
    }

    parts.files = std::make_unique<DiskSource>(folder);
    std::vector<HostEntry> drives;
    if (folder->List("drives", drives) == kErrorSuccess) {
        for (const HostEntry& entry : drives) {
            const char16_t letter =
                entry.name.size() == 1 ? ToUpper(static_cast<char16_t>(entry.name[0] & 0x7F)) : u'\0';
            if (letter < u'A' || letter > u'Z') continue;
            parts.drives.emplace_back(letter, u"drives\\" + FromUtf8(entry.name));
        }
    }
    if (folder->Query("host", kind, size) == kErrorSuccess && kind == SourceKind::Folder) {
        if (folder->OpenBelow("host", parts.hostFolder) != kErrorSuccess) {
            return SourceError{folder->Path() + "/host", SourceError::Place::None, 0, "cannot be opened"};
        }
    }
    return std::nullopt;
}

}  // namespace roundup
