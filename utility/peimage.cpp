#include "utility/peimage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/machine.h"
#include "utility/casemap.h"
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

bool HasImageEnding(std::u16string_view path) {
    constexpr std::size_t kLength = 4;
    if (path.size() < kLength || path[path.size() - kLength] != u'.') return false;
    return std::ranges::any_of(kImageEndings, [ending = path.substr(path.size() - kLength)](std::u16string_view one) {
        return EqualsNoCase(ending, one);
    });
}

// The magic of an image file's optional header; 0 for every other file.
std::uint16_t MagicOf(const char16_t* path) {
    ImageFile file(path);
    std::array<std::byte, kDosHeaderSize> dos;
    if (!file.ReadAt(0, dos) || FieldAt<std::uint16_t>(dos, 0) != kDosSignature) return 0;
    std::array<std::byte, kNtHeaderSize> nt;
    if (!file.ReadAt(FieldAt<std::uint32_t>(dos, kNtHeaderOffsetAt), nt)) return 0;
    return FieldAt<std::uint32_t>(nt, 0) == kNtSignature ? FieldAt<std::uint16_t>(nt, kMagicAt) : std::uint16_t{0};
}

}  // namespace

ImageBits ImageBitsOf(const char16_t* path) {
    if (!Is64BitOS()) return {true, false};
    if (path == nullptr) return {false, false};
    const FsRedirectGuard guard;
    const std::u16string_view text(path);
    ImageBits bits{IsUnderSystemX86(text, true) && PathExists(path), IsUnderSystem(text, true) && PathExists(path)};
    if ((bits.is32 && bits.is64) || !HasImageEnding(text)) return bits;
    const std::uint16_t magic = MagicOf(path);
    bits.is32 = bits.is32 || magic == kMagic32;
    bits.is64 = bits.is64 || magic == kMagic64;
    return bits;
}

bool IsPe32(const char16_t* path) { return ImageBitsOf(path).is32; }

bool IsPe32Plus(const char16_t* path) { return ImageBitsOf(path).is64; }

}  // namespace roundup
