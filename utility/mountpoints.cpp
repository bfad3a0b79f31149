#include "utility/mountpoints.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"

namespace roundup {

namespace {

constexpr std::size_t kPathSize = 520;
constexpr std::size_t kReparseSize = 16384;            // MAXIMUM_REPARSE_DATA_BUFFER_SIZE
constexpr std::uint32_t kTagMountPoint = 0xA0000003U;  // IO_REPARSE_TAG_MOUNT_POINT
constexpr int kMostMountPoints = 63;                   // what the platform itself follows in one path
constexpr std::size_t kDriveRoot = 3;                  // characters of "C:\"

// REPARSE_DATA_BUFFER, the mount point's form: tag, data length and a reserved word, then offset and length in bytes
// of the substitute name and of the print name, and the names themselves.
constexpr std::size_t kNameOffsetAt = 8;
constexpr std::size_t kNameLengthAt = 10;
constexpr std::size_t kNamesAt = 16;
constexpr std::size_t kNtPrefix = 4;  // characters of "\??\"

template <class T>
T ReadAt(const std::byte* data, std::size_t offset) {
    T value;
    std::memcpy(&value, data + offset, sizeof value);
    return value;
}

// Mount points exist on NTFS alone; asking other volumes for reparse data can take long (network, removable).
bool IsOnNtfs(const char16_t* path) {
    IFileSystem& files = CurrentMachine().Files();
    char16_t full[kPathSize] = {};
    const std::uint32_t length = files.GetFullPath(path, full, kPathSize);
    if (length < 2 || length >= kPathSize || full[1] != u':') return false;
    const char16_t root[] = {full[0], u':', u'\\', u'\0'};
    char16_t name[64] = {};
    return files.GetVolumeFileSystem(root, name, std::size(name)) == kErrorSuccess &&
           std::u16string_view(name) == u"NTFS";
}

// Takes the name out of size bytes of reparse data; false when it is broken or does not fit.
bool ReadSubstituteName(const std::byte* data, std::size_t size, char16_t* target, std::size_t room) {
    if (size < kNamesAt || ReadAt<std::uint32_t>(data, 0) != kTagMountPoint) return false;
    const std::size_t offset = ReadAt<std::uint16_t>(data, kNameOffsetAt);
    const std::size_t characters = ReadAt<std::uint16_t>(data, kNameLengthAt) / sizeof(char16_t);
    if (kNamesAt + offset + characters * sizeof(char16_t) > size) return false;
    if (characters <= kNtPrefix || characters - kNtPrefix >= room) return false;
    const std::size_t length = characters - kNtPrefix;
    std::memcpy(target, data + kNamesAt + offset + kNtPrefix * sizeof(char16_t), length * sizeof(char16_t));
    target[length] = u'\0';
    return true;
}

bool IsSameOrInside(std::u16string_view path, std::u16string_view folder) {
    if (!folder.empty() && folder.back() == u'\\') folder.remove_suffix(1);
    return StartsWithNoCase(path, folder) && (path.size() == folder.size() || path[folder.size()] == u'\\');
}

// Puts target in the place of the first length characters of path; false when that does not fit.
bool ReplacePrefix(FixedText<kPathSize>& path, std::size_t length, std::u16string_view target) {
    FixedText<kPathSize> result(target);
    std::u16string_view rest = path.View().substr(length);
    if (!rest.empty() && !target.empty() && target.back() == u'\\') rest.remove_prefix(1);
    if (target.size() >= kPathSize || !result.Append(rest)) return false;
    path = result;
    return true;
}

enum class Step { Next, Followed, Stop, Fail };

// Tries the prefix of length characters; length becomes that of what stands in its place afterwards.
Step FollowPrefix(FixedText<kPathSize>& path, std::size_t& length) {
    const FixedText<kPathSize> prefix(path.View().substr(0, length));
    FixedText<kPathSize> target;
    if (!IsReparseFolder(prefix.Text()) || !GetMountTarget(prefix.Text(), target)) return Step::Next;
    if (IsSameOrInside(prefix, target) || IsSameOrInside(target, prefix)) return Step::Stop;
    if (!ReplacePrefix(path, length, target)) return Step::Fail;
    length = target.View().size();
    return Step::Followed;
}

}  // namespace

bool GetMountTarget(const char16_t* path, char16_t* target, std::size_t size) {
    if (target == nullptr || size == 0) return false;
    target[0] = u'\0';
    if (path == nullptr || path[0] == u'\0' || !IsOnNtfs(path)) return false;
    std::array<std::byte, kReparseSize> data;
    std::uint32_t done = 0;
    const Win32Error error = CurrentMachine().Files().ReadReparsePoint(path, data.data(), kReparseSize, done);
    if (error != kErrorSuccess || done > data.size()) return false;
    return ReadSubstituteName(data.data(), done, target, size);
}

bool ResolveMountPoints(const char16_t* path, char16_t* target, std::size_t size) {
    const std::u16string_view source = path != nullptr ? std::u16string_view(path) : std::u16string_view();
    if (source.size() <= kDriveRoot || source.size() >= kPathSize) return false;
    FixedText<kPathSize> work(source);
    int followed = 0;
    std::size_t start = kDriveRoot;  // where the part to try begins
    while (start < work.View().size()) {
        std::size_t end = std::min(work.View().find(u'\\', start), work.View().size());
        const Step step = FollowPrefix(work, end);
        if (step == Step::Fail) return false;
        if (step == Step::Stop) break;
        if (step == Step::Next) {
            start = end + 1;
            continue;
        }
        if (++followed > kMostMountPoints) return false;
        // The new path goes on from the same position. A target that ends in front of it may be a mount point too.
        if (start >= end) start = std::max(work.View().substr(0, end).rfind(u'\\') + 1, kDriveRoot);
    }
    if (followed == 0 || work.View().size() >= size) return false;
    CopyBounded(target, work, size);
    return true;
}

}  // namespace roundup
