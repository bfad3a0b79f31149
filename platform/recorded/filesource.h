// A read-only tree of files that a machine's drives are shown from: a folder of this computer, or one in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/win32.h"

namespace roundup {

inline constexpr std::uint64_t kUnknownSize = 0xFFFFFFFFFFFFFFFFU;

// Other is what is neither of the first three, such as a pipe: it is listed, and cannot be opened.
enum class SourceKind : std::uint8_t { File, Folder, Link, Other };

struct SourceEntry {
    std::u16string name;
    SourceKind kind = SourceKind::File;
    std::uint64_t size = kUnknownSize;  // bytes, when the listing tells it already
};

// Content of one file, read at any place by any thread. Reading behind the end moves 0 bytes.
class IFileStream {
  public:
    IFileStream() = default;
    IFileStream(const IFileStream&) = delete;
    IFileStream& operator=(const IFileStream&) = delete;
    virtual ~IFileStream() = default;

    virtual Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) = 0;
    virtual Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) = 0;
    virtual Win32Error GetSize(std::uint64_t& size) = 0;
    virtual Win32Error SetSize(std::uint64_t size) = 0;
};

// Where a link points: the parts of its text, "." left out, ".." as they stand. What does not lie below the root,
// as far as the text alone tells, is outside.
struct LinkTarget {
    bool outside = false;
    bool fromRoot = false;  // else from the folder that holds the link
    std::vector<std::u16string> parts;
};

// Paths are names as they were listed, separated by backslashes, from the root (""). They hold no "." and no "..".
// Nothing is ever written. Every thread may call at any time.
class IFileSource {
  public:
    IFileSource() = default;
    IFileSource(const IFileSource&) = delete;
    IFileSource& operator=(const IFileSource&) = delete;
    virtual ~IFileSource() = default;

    // All entries in any order. Links are not followed, here and below.
    virtual Win32Error List(std::u16string_view folder, std::vector<SourceEntry>& entries) = 0;
    virtual Win32Error GetSize(std::u16string_view file, std::uint64_t& size) = 0;
    virtual Win32Error Open(std::u16string_view file, std::unique_ptr<IFileStream>& stream) = 0;
    virtual Win32Error ReadLink(std::u16string_view link, LinkTarget& target) = 0;
    // The self-relative security descriptor of a file or folder, where the file system of the source shows one; empty
    // otherwise. Throws std::bad_alloc.
    virtual std::vector<std::byte> ReadSecurity(std::u16string_view /*path*/) { return {}; }
    // True when every long name has a short one that follows from it (wineshortname.h).
    virtual bool HasWineShortNames() const noexcept { return false; }
};

}  // namespace roundup
