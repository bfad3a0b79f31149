// Files that a machine's own writes made: they belong to the machine and are gone with it.
#pragma once

#include <atomic>
#include <memory>
#include <shared_mutex>
#include <string>

#include "platform/recorded/filesource.h"

namespace roundup {

// How many bytes may still be written to the machine, as on a disk that gets full. Unlimited unless told.
class WriteBudget {
  public:
    void Limit(std::uint64_t bytes) noexcept { m_left = bytes; }
    // Takes the bytes off what is left; false, and nothing taken, when that is less.
    bool Take(std::uint64_t bytes) noexcept;

  private:
    std::atomic<std::uint64_t> m_left{UINT64_MAX};
};

// The content of one such file.
class MemoryFile {
  public:
    explicit MemoryFile(WriteBudget& budget) : m_budget(budget) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) const;
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done);
    std::uint64_t Size() const noexcept { return m_size; }
    Win32Error SetSize(std::uint64_t size);

  private:
    WriteBudget& m_budget;
    mutable std::shared_mutex m_lock;
    std::string m_bytes;  // guarded by m_lock
    std::atomic<std::uint64_t> m_size{0};
};

// A stream over such a content, which lives on until the last of them is closed.
std::unique_ptr<IFileStream> OpenMemoryFile(std::shared_ptr<MemoryFile> file);

}  // namespace roundup
