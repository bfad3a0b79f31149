#include "utility/fileinfo.h"

#include <memory>
#include <new>
#include <string_view>

#include "platform/machine.h"
#include "utility/stringcontainers.h"

namespace roundup {

namespace {

constexpr std::uint64_t kLargestIni = 0x100000;  // bytes
constexpr int kMostIniKeys = 100;

IFileSystem& Files() { return CurrentMachine().Files(); }

std::uint32_t AttributesOf(const char16_t* path, bool noRedirect) {
    if (path == nullptr || path[0] == u'\0') return kInvalidAttributes;
    if (!noRedirect) return Files().GetAttributes(path);
    const FsRedirectGuard guard;
    return Files().GetAttributes(path);
}

// The two joined with one backslash, also when the folder brings its own.
bool JoinPath(OwnedString& path, const char16_t* folder, const char16_t* file) {
    if (folder == nullptr || file == nullptr) return false;
    std::u16string_view front = folder;
    if (!front.empty() && front.back() == u'\\') front.remove_suffix(1);
    return AssignConcat3(path, front, u"\\", file) && !path.IsEmpty();
}

void AddIniKeys(const char16_t* path, const char16_t* section, CStringSet& keys) {
    const std::uint64_t bytes = GetFileSize64(path);
    if (bytes == 0 || bytes > kLargestIni) return;
    // A name takes no more characters in the list than bytes in the file, and two zeros end the list.
    const auto size = static_cast<std::uint32_t>(bytes) + 2;
    const std::unique_ptr<char16_t[]> list(new (std::nothrow) char16_t[size]);
    if (list == nullptr) return;
    const std::uint32_t length =
        CurrentMachine().Profile().GetString(section, nullptr, nullptr, list.get(), size, path);
    std::u16string_view rest(list.get(), length < size ? length : 0);
    for (int count = 0; count < kMostIniKeys && !rest.empty(); ++count) {
        const std::u16string_view key = rest.substr(0, rest.find(u'\0'));
        if (!key.empty()) keys.Add(key);
        rest.remove_prefix(key.size() < rest.size() ? key.size() + 1 : rest.size());
    }
}

}  // namespace

FsRedirectGuard::FsRedirectGuard() : m_disabled(Files().DisableRedirection(m_state)) {}

FsRedirectGuard::~FsRedirectGuard() {
    if (m_disabled) Files().RevertRedirection(m_state);
}

bool PathExists(const char16_t* path, bool noRedirect) { return AttributesOf(path, noRedirect) != kInvalidAttributes; }

bool IsFilePath(const char16_t* path, bool noRedirect) {
    // What cannot be had has every bit set, also this one.
    return (AttributesOf(path, noRedirect) & kAttributeDirectory) == 0;
}

std::uint64_t GetFileSize64(const char16_t* path, bool noRedirect) {
    if (path == nullptr || path[0] == u'\0') return 0;
    FileInfo info;
    if (!noRedirect) return Files().GetInfo(path, info) == kErrorSuccess ? info.size : 0;
    const FsRedirectGuard guard;
    return Files().GetInfo(path, info) == kErrorSuccess ? info.size : 0;
}

bool PatternExists(const char16_t* pattern) {
    if (pattern == nullptr || pattern[0] == u'\0') return false;
    FindHandle find = kInvalidFile;
    FindData data;
    if (Files().FindFirst(pattern, find, data) != kErrorSuccess) return false;
    Files().FindClose(find);
    return true;
}

bool IsReparseFolder(const char16_t* path) {
    constexpr std::uint32_t kBoth = kAttributeDirectory | kAttributeReparsePoint;
    const std::uint32_t attributes = AttributesOf(path, false);
    return attributes != kInvalidAttributes && (attributes & kBoth) == kBoth;
}

bool ReadIniKeys(const char16_t* folder, const char16_t* file, const char16_t* section, CStringSet& keys) {
    OwnedString path;
    if (section != nullptr && JoinPath(path, folder, file)) AddIniKeys(path.Get(), section, keys);
    return !keys.empty();
}

}  // namespace roundup
