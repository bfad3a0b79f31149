#include "utility/specialfolders.h"

#include <algorithm>

#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

// The order decides which number a path stands for that several of them share.
constexpr std::uint8_t kShellFolders[] = {48, 29, 26, 10, 59, 47, 30, 35, 46, 31, 53, 58, 54, 23, 22, 24, 45,
                                          55, 61, 49, 3,  33, 0,  25, 16, 17, 6,  20, 34, 1,  32, 28, 5,  13,
                                          39, 14, 19, 18, 5,  4,  27, 40, 2,  8,  56, 57, 9,  11, 7,  21, 36};
static_assert(sizeof kShellFolders == 51);

constexpr std::uint32_t NumberIn(Csidl number) noexcept { return static_cast<std::uint32_t>(number); }

constexpr bool IsSeparator(char16_t c) noexcept { return c == u'\\' || c == u'/'; }

bool IsUnder(Csidl number, std::u16string_view path, bool below) {
    const OwnedString* folder = ProcessWide<SpecialFolderMap>().Find(NumberIn(number));
    if (folder == nullptr || !StartsWithNoCase(path, *folder)) return false;
    const std::size_t length = folder->Length();
    return path.size() == length || (below && path[length] == u'\\');
}

}  // namespace

SpecialFolderMap::SpecialFolderMap() {
    for (const std::uint8_t number : kShellFolders) AddShellFolder(number);
    if (Is64BitOS()) {
        Add64BitFolders();
    } else {
        Add32BitFolders();
    }
}

void SpecialFolderMap::Add(std::uint32_t number, std::u16string_view path) {
    if (path.empty() || !m_paths[number].IsNull()) return;
    OwnedString& kept = m_paths[number];
    if (!AssignString(kept, path)) return;
    const auto before = [](const PathEntry& entry, std::u16string_view other) {
        return CompareNoCase(entry.path, other) < 0;
    };
    const auto place = std::lower_bound(m_numbers.begin(), m_numbers.end(), path, before);
    if (place != m_numbers.end() && EqualsNoCase(place->path, path)) return;
    m_numbers.insert(place, {kept.View(), number});
}

void SpecialFolderMap::AddShellFolder(std::uint32_t number) {
    char16_t path[260] = {};
    if (CurrentMachine().Shell().GetFolderPath(number, path)) Add(number, path);
}

void SpecialFolderMap::AddEnvironment(std::uint32_t number, const char16_t* variable) {
    char16_t path[520] = {};
    const std::uint32_t length = CurrentMachine().System().GetEnvironment(variable, path, std::size(path));
    if (length < std::size(path)) Add(number, path);
}

// The native folders of a 32-bit system are its 32-bit ones.
void SpecialFolderMap::Add32BitFolders() {
    static constexpr Csidl kPairs[][2] = {{Csidl::System, Csidl::SystemX86},
                                          {Csidl::ProgramFiles, Csidl::ProgramFilesX86},
                                          {Csidl::ProgramFilesCommon, Csidl::ProgramFilesCommonX86}};
    for (const auto& [native, x86] : kPairs) {
        AddShellFolder(NumberIn(native));
        if (const OwnedString* path = Find(NumberIn(native))) Add(NumberIn(x86), *path);
    }
}

// The shell answers a 32-bit process with the 32-bit folders for the native numbers; the environment does not.
void SpecialFolderMap::Add64BitFolders() {
    for (const Csidl number : {Csidl::SystemX86, Csidl::ProgramFilesX86, Csidl::ProgramFilesCommonX86}) {
        AddShellFolder(NumberIn(number));
    }
    {
        const FsRedirectGuard guard;
        AddShellFolder(NumberIn(Csidl::System));
    }
    AddEnvironment(NumberIn(Csidl::ProgramFiles), u"ProgramW6432");
    AddEnvironment(NumberIn(Csidl::ProgramFilesCommon), u"CommonProgramW6432");
}

const OwnedString* SpecialFolderMap::Find(std::uint32_t number) const noexcept {
    return number < kNumbers && !m_paths[number].IsNull() ? &m_paths[number] : nullptr;
}

std::int32_t SpecialFolderMap::NumberOf(std::u16string_view path) const noexcept {
    const auto before = [](const PathEntry& entry, std::u16string_view other) {
        return CompareNoCase(entry.path, other) < 0;
    };
    const auto place = std::lower_bound(m_numbers.begin(), m_numbers.end(), path, before);
    if (place == m_numbers.end() || !EqualsNoCase(place->path, path)) return -1;
    return static_cast<std::int32_t>(place->number);
}

const char16_t* GetSpecialFolder(std::uint32_t number) {
    const OwnedString* path = ProcessWide<SpecialFolderMap>().Find(number);
    return path != nullptr ? path->Get() : nullptr;
}

bool IsSpecialFolder(TextOrNull text) {
    std::u16string_view path = text.View();
    if (path.size() < 2) return false;
    if (IsSeparator(path.back())) path.remove_suffix(1);
    return ProcessWide<SpecialFolderMap>().NumberOf(path) >= 0;
}

std::uint32_t FindSpecialFolderPrefix(TextOrNull text, std::size_t& length) {
    const std::u16string_view path = text.View();
    const SpecialFolderMap& folders = ProcessWide<SpecialFolderMap>();
    for (std::size_t end = path.size(); end != std::u16string_view::npos && end != 0;
         end = path.find_last_of(u"\\/", end - 1)) {
        const std::int32_t number = folders.NumberOf(path.substr(0, end));
        if (number < 0) continue;
        length = end;
        return static_cast<std::uint32_t>(number);
    }
    length = 0;
    return 0;
}

bool IsUnderWindows(TextOrNull path, bool below) { return IsUnder(Csidl::Windows, path.View(), below); }
bool IsUnderSystem(TextOrNull path, bool below) { return IsUnder(Csidl::System, path.View(), below); }
bool IsUnderSystemX86(TextOrNull path, bool below) { return IsUnder(Csidl::SystemX86, path.View(), below); }

int ClassifyProgramFiles(TextOrNull path, bool below) {
    if (IsUnder(Csidl::ProgramFilesX86, path.View(), below)) return 1;
    return IsUnder(Csidl::ProgramFiles, path.View(), below) ? 2 : 0;
}

bool IsSystemRoot(TextOrNull path) {
    if (path.IsEmpty()) return false;
    return path.View().size() < 4 || IsUnderWindows(path, false) || IsUnderSystem(path, true) ||
           IsUnderSystemX86(path, true) || ClassifyProgramFiles(path, false) != 0;
}

void DropIfSystemRoot(OwnedString& path) {
    if (IsSystemRoot(path)) path.Reset();
}

}  // namespace roundup
