#include "utility/peimage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/ownedstring.h"
#include "utility/specialfolders.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

constexpr std::size_t kDosHeaderSize = 64;
constexpr std::size_t kNtHeaderSize = 264;  // IMAGE_NT_HEADERS64
constexpr std::size_t kNtHeaderOffsetAt = 60;
constexpr std::size_t kMagicAt = 24;
constexpr std::uint16_t kDosSignature = 23117;  // "MZ"
constexpr std::uint32_t kNtSignature = 17744;   // "PE" and two zeros
constexpr std::uint16_t kMagic32 = 267;
constexpr std::uint16_t kMagic64 = 523;

constexpr std::u16string_view kImageEndings[] = {u".dll", u".exe", u".sys", u".ocx", u".com"};

// An open file, closed by the end.
class ImageFile {
  public:
    explicit ImageFile(const char16_t* path) : m_files(CurrentMachine().Files()) {
        m_open = m_files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, m_file) == kErrorSuccess;
    }
    ~ImageFile() {
        if (m_open) m_files.Close(m_file);
    }
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    template <std::size_t N>
    bool ReadAt(std::uint64_t position, std::array<std::byte, N>& data) {
        if (!m_open || m_files.SetPosition(m_file, position) != kErrorSuccess) return false;
        std::size_t got = 0;
        while (got < N) {
            std::uint32_t done = 0;
            const auto room = static_cast<std::uint32_t>(N - got);
            if (m_files.Read(m_file, data.data() + got, room, done) != kErrorSuccess) return false;
            if (done == 0 || done > room) return false;
            got += done;
        }
        return true;
    }

  private:
    IFileSystem& m_files;
    FileHandle m_file = kInvalidFile;
    bool m_open = false;
};

template <class T, std::size_t N>
T FieldAt(const std::array<std::byte, N>& data, std::size_t offset) {
    T value;
    std::memcpy(&value, data.data() + offset, sizeof value);
    return value;
}

bool HasImageEnding(const char16_t* path) {
    return std::any_of(std::begin(kImageEndings), std::end(kImageEndings),
                       [path](std::u16string_view ending) { return EndsWithNoCase(path, ending); });
}

bool HasMagic(const char16_t* path, std::uint16_t magic) {
    if (!HasImageEnding(path)) return false;
    ImageFile file(path);
    std::array<std::byte, kDosHeaderSize> dos;
    if (!file.ReadAt(0, dos) || FieldAt<std::uint16_t>(dos, 0) != kDosSignature) return false;
    std::array<std::byte, kNtHeaderSize> nt;
    if (!file.ReadAt(FieldAt<std::uint32_t>(dos, kNtHeaderOffsetAt), nt)) return false;
    return FieldAt<std::uint32_t>(nt, 0) == kNtSignature && FieldAt<std::uint16_t>(nt, kMagicAt) == magic;
}

}  // namespace

bool IsPe32(const char16_t* path) {
    if (!Is64BitOS()) return true;
    if (path == nullptr) return false;
    const FsRedirectGuard guard;
    return (IsUnderSystemX86(path, true) && PathExists(path)) || HasMagic(path, kMagic32);
}

bool IsPe32Plus(const char16_t* path) {
    if (!Is64BitOS() || path == nullptr) return false;
    const FsRedirectGuard guard;
    return (IsUnderSystem(path, true) && PathExists(path)) || HasMagic(path, kMagic64);
}

}  // namespace roundup
