// Reading parts of one file of the machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/filesystem.h"

namespace roundup {

class FileBytes {
  public:
    // Opens the file for reading; IsOpen tells whether that went well.
    FileBytes(IFileSystem& files, const char16_t* path);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    bool IsOpen() const noexcept { return m_file != kInvalidFile; }
    std::uint64_t Size() const noexcept { return m_size; }
    // The bytes at offset, whole or not at all.
    bool Read(std::uint64_t offset, std::uint32_t size, std::vector<std::byte>& bytes) const;

  private:
    IFileSystem& m_files;
    FileHandle m_file = kInvalidFile;
    std::uint64_t m_size = 0;
};

}  // namespace roundup
