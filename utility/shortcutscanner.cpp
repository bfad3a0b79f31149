#include "utility/shortcutscanner.h"

#include <iterator>
#include <string>

#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/filesearch.h"
#include "utility/pathtext.h"
#include "utility/specialfolders.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

using PathBuffer = FixedText<520>;

// One word for each folder: its number (shlobj_core.h), and the top bit for what is scanned with all below it.
constexpr std::uint32_t kRecursive = 0x80000000U;
constexpr std::uint32_t kFolders[] = {
    kRecursive | 11,  // start menu
    kRecursive | 22,  // common start menu
    kRecursive | 23,  // common programs
    kRecursive | 2,   // programs
    kRecursive | 24,  // common startup
    kRecursive | 7,   // startup
    25,               // common desktop
    16,               // desktop
};
constexpr std::uint32_t kApplicationData = 26;
constexpr std::u16string_view kTaskBar = u"\\Microsoft\\Internet Explorer\\Quick Launch\\User Pinned\\TaskBar";

// The calling thread may use the shell's objects for a scope.
class Apartment {
  public:
    Apartment() : m_shell(CurrentMachine().Shell()) { m_shell.EnterApartment(); }
    ~Apartment() { m_shell.LeaveApartment(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    bool ReadLink(const char16_t* path, ShellLink& link) { return m_shell.ReadLink(path, link); }

  private:
    IShell& m_shell;
};

bool AssignLongPath(OwnedString& target, const char16_t* path) {
    PathBuffer longPath;
    GetLongPath(path, longPath);
    return AssignString(target, longPath);
}

// An advertised shortcut says which component of which product it opens; where that is, the installer knows.
void FindAdvertisedTarget(const char16_t* path, OwnedString& target) {
    IInstaller& installer = CurrentMachine().Installer();
    char16_t product[39] = {};
    char16_t feature[39] = {};
    char16_t component[39] = {};
    if (installer.GetShortcutTarget(path, product, feature, component) != kErrorSuccess) return;
    PathBuffer found;
    std::uint32_t length = static_cast<std::uint32_t>(PathBuffer::Size());
    (void)installer.GetComponentPath(product, component, found.Data(), length);
    if (!found.IsEmpty() && PathExists(found.Text())) (void)AssignLongPath(target, found.Text());
}

// A 32-bit process stores its own Program Files folders even for files of the native ones.
bool MoveToNativeFolder(std::u16string& path) {
    std::size_t length = 0;
    const std::uint32_t number = FindSpecialFolderPrefix(path, length);
    Csidl native{};
    if (number == static_cast<std::uint32_t>(Csidl::ProgramFilesX86)) {
        native = Csidl::ProgramFiles;
    } else if (number == static_cast<std::uint32_t>(Csidl::ProgramFilesCommonX86)) {
        native = Csidl::ProgramFilesCommon;
    } else {
        return false;
    }
    const char16_t* folder = GetSpecialFolder(native);
    if (folder == nullptr) return false;
    path.replace(0, length, folder);
    return true;
}

bool FindPlainTarget(std::u16string path, OwnedString& target) {
    if (path.empty()) return false;
    if (!PathExists(path.c_str())) {
        if (!Is64BitOS() || !MoveToNativeFolder(path) || !PathExists(path.c_str())) return false;
    }
    return AssignLongPath(target, path.c_str());
}

// The parts of the shortcut's own path: folder, name, ending.
bool SplitLinkPath(std::u16string_view path, ShortcutRecord& record) {
    const std::size_t dot = path.rfind(u'.');
    if (dot == std::u16string_view::npos) return false;
    const std::size_t separator = path.substr(0, dot).rfind(u'\\');
    if (separator == std::u16string_view::npos) return false;
    return AssignString(record.linkFolder, path.substr(0, separator)) &&
           AssignString(record.linkBaseName, path.substr(separator + 1, dot - separator - 1)) &&
           AssignString(record.linkPath, path);
}

}  // namespace

ShortcutScanner::ShortcutScanner() {
    ScanAll();
    CollectTargets();
}

ShortcutScanner::~ShortcutScanner() = default;

const ShortcutScanner& ShortcutScanner::Instance() { return ProcessWide<ShortcutScanner>(); }

bool ShortcutScanner::FindByTarget(std::u16string_view target, std::vector<const ShortcutRecord*>& records) const {
    const auto [first, last] = m_byTarget.equal_range(target);
    for (auto each = first; each != last; ++each) records.push_back(each->second);
    return !records.empty();
}

// The folders behind one that the machine does not have are not scanned; the taskbar always is.
void ShortcutScanner::ScanAll() {
    for (const std::uint32_t word : kFolders) {
        const char16_t* folder = GetSpecialFolder(word & ~kRecursive);
        if (folder == nullptr) break;
        ScanFolder(folder, (word & kRecursive) != 0);
    }
    if (const char16_t* data = GetSpecialFolder(kApplicationData)) {
        ScanFolder(std::u16string(data).append(kTaskBar), false);
    }
}

// Descends no deeper than paths are long: a path that has no long form of less than 520 characters is empty.
void ShortcutScanner::ScanFolder(std::u16string_view folder, bool recursive) {
    if (folder.empty()) return;
    std::u16string path = std::u16string(folder).append(u"\\*");
    FileSearch search(path.c_str());
    while (search.Next()) {
        if (search.IsReparseFolder()) continue;
        path.resize(folder.size() + 1);
        path.append(search.Name());
        PathBuffer longPath;
        GetLongPath(path.c_str(), longPath);
        if (recursive && search.IsFolder()) {
            ScanFolder(longPath, true);
        } else if (EndsWithNoCase(search.Name(), u".lnk")) {
            AddShortcut(longPath.Text());
        }
    }
}

void ShortcutScanner::AddShortcut(const char16_t* path) {
    if (m_byLink.contains(path)) return;
    auto record = std::make_unique<ShortcutRecord>();
    if (!ReadShortcut(*record, path)) return;
    const ShortcutRecord* const kept = record.get();
    if (m_byLink.try_emplace(kept->linkPath.View(), std::move(record)).second) {
        m_byTarget.emplace(kept->targetPath.View(), kept);
    }
}

bool ShortcutScanner::ReadShortcut(ShortcutRecord& record, const char16_t* path) {
    FindAdvertisedTarget(path, record.targetPath);
    Apartment apartment;
    // Covers what the link object itself looks up, too: a target in the native system folder is found by its path.
    const FsRedirectGuard guard;
    ShellLink link;
    if (!apartment.ReadLink(path, link)) return false;
    if (record.targetPath.IsEmpty() && !FindPlainTarget(link.path, record.targetPath)) return false;
    record.hotkey = link.hotkey;
    record.showCommand = link.showCommand;
    record.iconIndex = link.iconIndex;
    return SplitLinkPath(path, record) && AssignLongPath(record.workingDirectory, link.workingDirectory.c_str()) &&
           AssignLongPath(record.iconPath, link.iconPath.c_str()) &&
           AssignString(record.description, link.description) && AssignString(record.arguments, link.arguments);
}

void ShortcutScanner::CollectTargets() {
    if (m_byTarget.empty() || !m_targets.empty()) return;
    for (auto each = m_byTarget.begin(); each != m_byTarget.end(); each = m_byTarget.upper_bound(each->first)) {
        m_targets.Add(each->first);
    }
}

}  // namespace roundup
