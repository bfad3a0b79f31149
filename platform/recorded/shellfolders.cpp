#include "platform/recorded/shellfolders.h"

#include "platform/recorded/registrytext.h"

namespace roundup {

namespace {

constexpr const char16_t* kCurrentVersion = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr const char16_t* kNtCurrentVersion = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const char16_t* kProfileList = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
constexpr const char16_t* kUserShellFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const char16_t* kShellFolders = u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const char16_t* kSystemEnvironment = u"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";

enum class Kept : std::uint8_t { Nowhere, User, Machine, CurrentVersion };

bool IsDrivePath(std::u16string_view path) noexcept {
    return path.size() >= 3 && path[1] == u':' && path[2] == u'\\' && ToUpper(path[0]) >= u'A' &&
           ToUpper(path[0]) <= u'Z';
}

// Variables that a 32-bit machine does not have tell the two kinds of folders apart.
bool IsOn32Bit(std::u16string_view variable) noexcept {
    return variable.find(u"(x86)") == std::u16string_view::npos && variable.find(u"W6432") == std::u16string_view::npos;
}

}  // namespace

// Variables in the paths of a default installation are those of m_roots.
struct ShellFolders::Row {
    std::uint8_t number;
    Kept kept;                          // where the registry has it
    const char16_t* value;              // under this name
    const char16_t* path;               // in a default installation
    const char16_t* variables[3] = {};  // environment variables that name it too
};

// Source of numbers, names and paths: shlobj_core.h ("CSIDL") and "KNOWNFOLDERID" of the Windows documentation. A
// number without a row is a folder that is none on disk (1, 3, 4, 10, 17, 18, 49, 61) or no folder at all. The first
// rows give the variables that the registry's texts about the others use.
static constexpr ShellFolders::Row kRows[] = {
    {36, Kept::Nowhere, nullptr, u"%Windows%", {u"SystemRoot", u"windir"}},
    {40, Kept::Nowhere, nullptr, u"%Profile%", {u"USERPROFILE"}},
    {35, Kept::Machine, u"Common AppData", u"%Data%", {u"ProgramData", u"ALLUSERSPROFILE"}},
    {26, Kept::User, u"AppData", u"%Profile%\\AppData\\Roaming", {u"APPDATA"}},
    {28, Kept::User, u"Local AppData", u"%Profile%\\AppData\\Local", {u"LOCALAPPDATA"}},
    {38, Kept::CurrentVersion, u"ProgramFilesDir", u"%Drive%\\Program Files", {u"ProgramFiles", u"ProgramW6432"}},
    {42, Kept::CurrentVersion, u"ProgramFilesDir (x86)", u"%Drive%\\Program Files (x86)", {u"ProgramFiles(x86)"}},
    {43,
     Kept::CurrentVersion,
     u"CommonFilesDir",
     u"%Drive%\\Program Files\\Common Files",
     {u"CommonProgramFiles", u"CommonProgramW6432"}},
    {44,
     Kept::CurrentVersion,
     u"CommonFilesDir (x86)",
     u"%Drive%\\Program Files (x86)\\Common Files",
     {u"CommonProgramFiles(x86)"}},
    {0, Kept::User, u"Desktop", u"%Profile%\\Desktop"},
    {2, Kept::User, u"Programs", u"%Roaming%\\Microsoft\\Windows\\Start Menu\\Programs"},
    {5, Kept::User, u"Personal", u"%Profile%\\Documents"},
    {6, Kept::User, u"Favorites", u"%Profile%\\Favorites"},
    {7, Kept::User, u"Startup", u"%Roaming%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {8, Kept::User, u"Recent", u"%Roaming%\\Microsoft\\Windows\\Recent"},
    {9, Kept::User, u"SendTo", u"%Roaming%\\Microsoft\\Windows\\SendTo"},
    {11, Kept::User, u"Start Menu", u"%Roaming%\\Microsoft\\Windows\\Start Menu"},
    {13, Kept::User, u"My Music", u"%Profile%\\Music"},
    {14, Kept::User, u"My Video", u"%Profile%\\Videos"},
    {16, Kept::User, u"Desktop", u"%Profile%\\Desktop"},
    {19, Kept::User, u"NetHood", u"%Roaming%\\Microsoft\\Windows\\Network Shortcuts"},
    {20, Kept::User, u"Fonts", u"%Windows%\\Fonts"},
    {21, Kept::User, u"Templates", u"%Roaming%\\Microsoft\\Windows\\Templates"},
    {22, Kept::Machine, u"Common Start Menu", u"%Data%\\Microsoft\\Windows\\Start Menu"},
    {23, Kept::Machine, u"Common Programs", u"%Data%\\Microsoft\\Windows\\Start Menu\\Programs"},
    {24, Kept::Machine, u"Common Startup", u"%Data%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {25, Kept::Machine, u"Common Desktop", u"%Public%\\Desktop"},
    {27, Kept::User, u"PrintHood", u"%Roaming%\\Microsoft\\Windows\\Printer Shortcuts"},
    {29, Kept::User, u"Startup", u"%Roaming%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {30, Kept::Machine, u"Common Startup", u"%Data%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {31, Kept::User, u"Favorites", u"%Profile%\\Favorites"},
    {32, Kept::User, u"Cache", u"%Local%\\Microsoft\\Windows\\INetCache"},
    {33, Kept::User, u"Cookies", u"%Local%\\Microsoft\\Windows\\INetCookies"},
    {34, Kept::User, u"History", u"%Local%\\Microsoft\\Windows\\History"},
    {37, Kept::Nowhere, nullptr, u"%Windows%\\System32"},
    {39, Kept::User, u"My Pictures", u"%Profile%\\Pictures"},
    {41, Kept::Nowhere, nullptr, u"%Windows%\\SysWOW64"},
    {45, Kept::Machine, u"Common Templates", u"%Data%\\Microsoft\\Windows\\Templates"},
    {46, Kept::Machine, u"Common Documents", u"%Public%\\Documents"},
    {47, Kept::Machine, u"Common Administrative Tools",
     u"%Data%\\Microsoft\\Windows\\Start Menu\\Programs\\Administrative Tools"},
    {48, Kept::User, u"Administrative Tools",
     u"%Roaming%\\Microsoft\\Windows\\Start Menu\\Programs\\Administrative Tools"},
    {53, Kept::Machine, u"CommonMusic", u"%Public%\\Music"},
    {54, Kept::Machine, u"CommonPictures", u"%Public%\\Pictures"},
    {55, Kept::Machine, u"CommonVideo", u"%Public%\\Videos"},
    {56, Kept::Nowhere, nullptr, u"%Windows%\\Resources"},
    {57, Kept::Nowhere, nullptr, u"%Windows%\\Resources\\0409"},
    {58, Kept::Machine, u"OEM Links", u"%Data%\\OEM Links"},
    {59, Kept::User, u"CD Burning", u"%Local%\\Microsoft\\Windows\\Burn\\Burn"},
};

ShellFolders::ShellFolders(IRegistry& registry, const MachineSettings& settings, const std::u16string& profile,
                           bool registryEnvironment, Environment& environment)
    : m_registry(registry), m_environment(environment), m_is64Bit(settings.Is64Bit()) {
    for (const auto& [name, value] : settings.environment) m_environment.Set(name, value);
    SetRoots(settings, profile);
    for (const Row& row : kRows) AddRow(row, settings);
    for (const auto& [number, path] : settings.folders) {
        if (number < m_paths.size()) m_paths[number] = path;
    }
    m_temp = m_paths[28] + u"\\Temp";
    m_environment.SetDefault(u"PUBLIC", *m_roots.Find(u"Public"));
    if (registryEnvironment) AddRegistryEnvironment();
    m_environment.Set(u"TEMP", m_temp);
    m_environment.Set(u"TMP", m_temp);
}

const std::u16string& ShellFolders::Path(std::uint32_t number) const noexcept {
    static const std::u16string kNone;
    return number < m_paths.size() ? m_paths[number] : kNone;
}

// The registry's own word on where Windows, the profiles and their shared folders are, since all else begins there.
void ShellFolders::SetRoots(const MachineSettings& settings, const std::u16string& profile) {
    std::u16string windows = Expanded(kHkeyLocalMachine, kNtCurrentVersion, u"SystemRoot");
    if (!IsDrivePath(windows)) windows = u"C:\\Windows";
    const std::u16string drive = windows.substr(0, 2);
    m_roots.Set(u"Windows", windows);
    m_roots.Set(u"Drive", drive);
    m_environment.SetDefault(u"SystemRoot", windows);
    m_environment.SetDefault(u"SystemDrive", drive);

    const auto root = [&](const char16_t* name, const char16_t* value, const std::u16string& otherwise) {
        std::u16string path = Expanded(kHkeyLocalMachine, kProfileList, value);
        m_roots.Set(name, IsDrivePath(path) ? path : otherwise);
    };
    root(u"Profiles", u"ProfilesDirectory", drive + u"\\Users");
    root(u"Data", u"ProgramData", drive + u"\\ProgramData");
    root(u"Public", u"Public", *m_roots.Find(u"Profiles") + u"\\Public");
    m_roots.Set(u"Profile", profile.empty() ? *m_roots.Find(u"Profiles") + u"\\" + settings.user : profile);
}

void ShellFolders::AddRow(const Row& row, const MachineSettings& settings) {
    std::u16string path;
    for (const auto& [number, own] : settings.folders) {
        if (number == row.number) path = own;
    }
    if (path.empty()) path = RegistryPath(row);
    if (path.empty()) path = m_roots.Expand(row.path);
    // A 32-bit machine has one of each.
    const std::uint8_t native = row.number == 41 ? 37 : row.number == 42 ? 38 : row.number == 44 ? 43 : 0;
    if (!m_is64Bit && native != 0) path = m_paths[native];
    m_paths[row.number] = path;
    if (row.number == 26) m_roots.Set(u"Roaming", path);
    if (row.number == 28) m_roots.Set(u"Local", path);
    for (const char16_t* variable : row.variables) {
        const bool exists = variable != nullptr && (m_is64Bit || IsOn32Bit(variable));
        if (exists) m_environment.SetDefault(variable, path);
    }
}

std::u16string ShellFolders::RegistryPath(const Row& row) const {
    std::u16string path;
    switch (row.kept) {
        case Kept::Nowhere:
            break;
        case Kept::User:
            path = Expanded(kHkeyCurrentUser, kUserShellFolders, row.value);
            if (!IsDrivePath(path)) path = Expanded(kHkeyCurrentUser, kShellFolders, row.value);
            break;
        case Kept::Machine:
            path = Expanded(kHkeyLocalMachine, kUserShellFolders, row.value);
            if (!IsDrivePath(path)) path = Expanded(kHkeyLocalMachine, kShellFolders, row.value);
            break;
        case Kept::CurrentVersion:
            path = Expanded(kHkeyLocalMachine, kCurrentVersion, row.value);
            break;
    }
    // A text that is no path on a drive says nothing: a network folder is out of reach, a variable may be unknown.
    if (!IsDrivePath(path)) return {};
    while (path.size() > 3 && path.back() == u'\\') path.pop_back();
    return path;
}

std::u16string ShellFolders::Expanded(KeyHandle root, const char16_t* key, const char16_t* name) const {
    std::uint32_t type = kRegNone;
    const std::optional<std::u16string> text = ReadRegistryText(m_registry, root, key, name, &type);
    if (!text) return {};
    return type == kRegExpandSz ? m_environment.Expand(*text) : *text;
}

// As the platform makes a user's environment: the system's variables, then the user's, in each plain ones before
// those that are made of others; a user's Path goes behind the system's.
void ShellFolders::AddRegistryEnvironment() {
    const std::pair<KeyHandle, const char16_t*> keys[] = {{kHkeyLocalMachine, kSystemEnvironment},
                                                          {kHkeyCurrentUser, u"Environment"},
                                                          {kHkeyCurrentUser, u"Volatile Environment"}};
    for (const auto& [root, key] : keys) {
        const std::vector<RegistryTextValue> values = ReadRegistryTexts(m_registry, root, key);
        for (const std::uint32_t type : {kRegSz, kRegExpandSz}) {
            for (const RegistryTextValue& value : values) {
                if (value.type != type || value.name.empty()) continue;
                std::u16string text = type == kRegExpandSz ? m_environment.Expand(value.text) : value.text;
                const std::u16string* before = m_environment.Find(value.name);
                const bool joins = before != nullptr && root == kHkeyCurrentUser && EqualsNoCase(value.name, u"Path");
                m_environment.Set(value.name, joins ? *before + u";" + text : text);
            }
        }
    }
}

}  // namespace roundup
