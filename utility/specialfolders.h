// The special folders of the machine, and what lies in them. All comparisons ignore case.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "utility/ownedstring.h"

namespace roundup {

// The numbers of SHGetFolderPathW (shlobj_core.h) that the system names.
enum class Csidl : std::uint32_t {
    Personal = 5,
    MyMusic = 13,
    MyVideo = 14,
    AppData = 26,
    LocalAppData = 28,
    CommonAppData = 35,
    Windows = 36,
    System = 37,
    ProgramFiles = 38,
    MyPictures = 39,
    SystemX86 = 41,
    ProgramFilesX86 = 42,
    ProgramFilesCommon = 43,
    ProgramFilesCommonX86 = 44,
    CommonDocuments = 46,
    CommonMusic = 53,
    CommonPictures = 54,
    CommonVideo = 55,
};

// Two maps, folder number to path and path to folder number, filled when the map is made and read-only from then on.
// ProcessWide<SpecialFolderMap>() is the one of the machine.
class SpecialFolderMap {
  public:
    SpecialFolderMap();
    SpecialFolderMap(const SpecialFolderMap&) = delete;
    SpecialFolderMap& operator=(const SpecialFolderMap&) = delete;

    // The path of a folder, null for a number without one.
    const OwnedString* Find(std::uint32_t number) const noexcept;
    // The number whose path this is, -1 without one. A path of several numbers has the one that came first.
    std::int32_t NumberOf(std::u16string_view path) const noexcept;

  private:
    static constexpr std::size_t kNumbers = 64;  // above the highest CSIDL in use, 61
    struct PathEntry {
        std::u16string_view path;  // that of m_paths
        std::uint32_t number;
    };

    void Add(std::uint32_t number, std::u16string_view path);
    void AddShellFolder(std::uint32_t number);
    void AddEnvironment(std::uint32_t number, const char16_t* variable);
    void Add32BitFolders();
    void Add64BitFolders();

    std::array<OwnedString, kNumbers> m_paths;
    std::vector<PathEntry> m_numbers;  // ascending by lower-cased path
};

// The path of a special folder, or null. Good until the machine's scope ends.
const char16_t* GetSpecialFolder(std::uint32_t number);
inline const char16_t* GetSpecialFolder(Csidl number) { return GetSpecialFolder(static_cast<std::uint32_t>(number)); }

// A path that is null counts as empty.

// True when the path, less one trailing "\" or "/", is a special folder; false below two characters.
bool IsSpecialFolder(TextOrNull path);

// The number of the special folder that is the longest prefix of the path, the whole path included, with the length
// of that prefix; 0, and length 0, when none is. Prefixes end at a "\" or "/" or with the path.
std::uint32_t FindSpecialFolderPrefix(TextOrNull path, std::size_t& length);

// True when the path is that folder, or, with below set, lies in it.
bool IsUnderWindows(TextOrNull path, bool below);
bool IsUnderSystem(TextOrNull path, bool below);
bool IsUnderSystemX86(TextOrNull path, bool below);

// 1 for the 32-bit Program Files folder, 2 for the native one, tested in that order; else 0.
int ClassifyProgramFiles(TextOrNull path, bool below);

// True for what an application can never have to itself: a path shorter than four characters, the Windows folder, the
// system folders and what lies in them, the Program Files folders. False for an empty text.
bool IsSystemRoot(TextOrNull path);
// Makes the string null when IsSystemRoot holds for it.
void DropIfSystemRoot(OwnedString& path);

}  // namespace roundup
