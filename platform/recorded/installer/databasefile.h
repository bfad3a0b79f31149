// The file of an installer database, read in pieces as they are asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>

#include "platform/filesystem.h"
#include "platform/threading.h"

namespace roundup {

// Small reads share whole blocks, which are kept; large ones go straight into their target. The file stays open until
// the object goes, which must be before the file system does. Every thread may call.
class DatabaseFile {
  public:
    // The largest file that is looked at. No package of any maker comes near it.
    static constexpr std::uint64_t kLargestSize = 1ULL << 31U;

    // Null for a file that cannot be opened, is empty or larger than that. Throws std::bad_alloc.
    static std::unique_ptr<DatabaseFile> Open(IFileSystem& files, const char16_t* path);
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;
    ~DatabaseFile();

    std::uint64_t Size() const noexcept { return m_size; }
    // False unless every byte was there. Throws std::bad_alloc.
    bool Read(std::uint64_t offset, std::span<std::byte> target);

  private:
    static constexpr std::uint64_t kBlock = 8192;

    DatabaseFile(IFileSystem& files, FileHandle file, std::uint64_t size) noexcept
        : m_files(files), m_file(file), m_size(size) {}
    const std::byte* BlockAt(std::uint64_t index);
    bool ReadFile(std::uint64_t offset, std::byte* target, std::uint64_t size);

    IFileSystem& m_files;
    const FileHandle m_file;
    const std::uint64_t m_size;
    Mutex m_lock;  // guards the file's position and what follows
    std::unordered_map<std::uint64_t, std::unique_ptr<std::byte[]>> m_blocks;
};

}  // namespace roundup
