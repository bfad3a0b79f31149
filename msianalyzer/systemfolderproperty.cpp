#include "msianalyzer/systemfolderproperty.h"

#include <algorithm>
#include <iterator>

#include "platform/machine.h"

namespace roundup {

namespace {

constexpr std::uint32_t kMaxPath = 260;
constexpr std::uint16_t kArchitectureIa64 = 6;          // PROCESSOR_ARCHITECTURE_IA64
constexpr std::uint16_t kArchitectureUnknown = 0xFFFF;  // PROCESSOR_ARCHITECTURE_UNKNOWN
constexpr std::uint32_t kWindows = 36;

// Where a folder comes from on machines of one width.
enum class Source : std::uint8_t { None, Shell, Fixed, Volume, Temp };

struct Place {
    Source source = Source::None;
    std::uint8_t machine = 0;  // CSIDL of a product that is installed for the machine
    std::uint8_t user = 0;     // the same for one user
    std::u16string_view path{};
};
struct FolderProperty {
    std::u16string_view name;
    Place on64;
    Place on32;
};

constexpr Place kNone;
constexpr Place Shell(std::uint8_t number) { return {Source::Shell, number, number}; }
constexpr Place Shell(std::uint8_t machine, std::uint8_t user) { return {Source::Shell, machine, user}; }
constexpr Place Fixed(std::u16string_view path) { return {Source::Fixed, 0, 0, path}; }
constexpr FolderProperty Same(std::u16string_view name, Place place) { return {name, place, place}; }

// The numbers are those of shlobj_core.h.
constexpr FolderProperty kFolders[] = {
    Same(u"AdminToolsFolder", Shell(47, 48)),
    Same(u"AppDataFolder", Shell(26)),
    Same(u"CommonAppDataFolder", Shell(35)),
    {u"CommonFiles64Folder", Shell(43), kNone},
    {u"CommonFilesFolder", Shell(44), Shell(43)},
    Same(u"DesktopFolder", Shell(25, 16)),
    Same(u"FavoritesFolder", Shell(6)),
    Same(u"FontsFolder", Shell(20)),
    Same(u"LocalAppDataFolder", Shell(28)),
    Same(u"MyPicturesFolder", Shell(39)),
    Same(u"PersonalFolder", Shell(5)),
    {u"ProgramFiles64Folder", Shell(38), kNone},
    {u"ProgramFilesFolder", Shell(42), Shell(38)},
    Same(u"ProgramMenuFolder", Shell(23, 2)),
    Same(u"SendToFolder", Shell(9)),
    Same(u"StartMenuFolder", Shell(22, 11)),
    Same(u"StartupFolder", Shell(24, 7)),
    {u"System16Folder", kNone, Fixed(u"C:\\Windows\\System")},
    {u"System64Folder", Fixed(u"C:\\Windows\\System32"), kNone},
    {u"SystemFolder", Fixed(u"C:\\Windows\\SysWow64"), Fixed(u"C:\\Windows\\System32")},
    Same(u"TempFolder", {Source::Temp}),
    Same(u"TemplateFolder", Shell(45, 21)),
    Same(u"WindowsFolder", Shell(kWindows)),
    Same(u"WindowsVolume", {Source::Volume}),
};

ResultCode ShellFolder(std::uint32_t number, std::u16string& path) {
    char16_t folder[kMaxPath] = {};
    if (!CurrentMachine().Shell().GetSpecialFolderPath(number, folder)) return Fail(SmallCode::InstallerFailure);
    path = folder;
    return kSuccess;
}

ResultCode TempFolder(std::u16string& path) {
    char16_t folder[kMaxPath] = {};
    const std::uint32_t length = CurrentMachine().System().GetTempFolder(folder, kMaxPath);
    if (length == 0 || length >= kMaxPath) return Fail(SmallCode::InstallerFailure, length);
    path.assign(folder, length);
    return kSuccess;
}

// The drive is the one of Windows, whatever its folder is called.
ResultCode OnWindowsDrive(std::u16string_view fixed, std::u16string& path) {
    std::u16string windows;
    if (const ResultCode rc = ShellFolder(kWindows, windows); Failed(rc)) return Pass(rc);
    path = fixed;
    if (!windows.empty()) path.front() = windows.front();
    return kSuccess;
}

ResultCode WindowsVolume(std::u16string& path) {
    constexpr std::size_t kVolumeLength = 3;  // "C:\"
    if (const ResultCode rc = ShellFolder(kWindows, path); Failed(rc)) return Pass(rc);
    if (path.size() > kVolumeLength) path.resize(kVolumeLength);
    return kSuccess;
}

}  // namespace

ResultCode GetArchitectureBits(std::uint32_t& bits) {
    const std::uint16_t architecture = CurrentMachine().System().GetNativeArchitecture();
    if (architecture == kArchitectureUnknown) return Fail(SmallCode::InstallerFailure, architecture);
    bits = architecture == kArchitectureIa64 || architecture == kArchitectureAmd64 ? 64 : 32;
    return kSuccess;
}

ResultCode ResolveSystemFolder(std::u16string_view name, std::u16string& path, bool perMachine) {
    std::uint32_t bits = 0;
    if (const ResultCode rc = GetArchitectureBits(bits); Failed(rc)) return Pass(rc);
    const FolderProperty* const folder = std::find_if(std::begin(kFolders), std::end(kFolders),
                                                      [name](const auto& entry) { return entry.name == name; });
    if (folder == std::end(kFolders)) return FailQuiet(SmallCode::BadData);
    const Place& place = bits == 64 ? folder->on64 : folder->on32;
    switch (place.source) {
        case Source::Shell:
            return ShellFolder(perMachine ? place.machine : place.user, path);
        case Source::Fixed:
            return OnWindowsDrive(place.path, path);
        case Source::Volume:
            return WindowsVolume(path);
        case Source::Temp:
            return TempFolder(path);
        case Source::None:
            break;
    }
    return FailQuiet(SmallCode::BadData);
}

}  // namespace roundup
