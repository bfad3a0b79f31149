#include "utility/fileinfo.h"

#include "platform/machine.h"

namespace roundup {

namespace {

IFileSystem& Files() { return CurrentMachine().Files(); }

std::uint32_t AttributesOf(const char16_t* path, bool noRedirect) {
    if (path == nullptr || path[0] == u'\0') return kInvalidAttributes;
    if (!noRedirect) return Files().GetAttributes(path);
    const FsRedirectGuard guard;
    return Files().GetAttributes(path);
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

}  // namespace roundup
