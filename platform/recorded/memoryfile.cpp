#include "platform/recorded/memoryfile.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace roundup {

namespace {

// A file in memory ends here; beyond it the disk counts as full.
constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 32;

class MemoryStream final : public IFileStream {
  public:
    explicit MemoryStream(std::shared_ptr<MemoryFile> file) : m_file(std::move(file)) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return m_file->ReadAt(position, buffer, size, done);
    }
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return m_file->WriteAt(position, buffer, size, done);
    }
    Win32Error GetSize(std::uint64_t& size) override {
        size = m_file->Size();
        return kErrorSuccess;
    }
    Win32Error SetSize(std::uint64_t size) override { return m_file->SetSize(size); }

  private:
    std::shared_ptr<MemoryFile> m_file;
};

}  // namespace

bool WriteBudget::Take(std::uint64_t bytes) noexcept {
    std::uint64_t left = m_left.load(std::memory_order_relaxed);
    do {
        if (left < bytes) return false;
    } while (left != UINT64_MAX && !m_left.compare_exchange_weak(left, left - bytes, std::memory_order_relaxed));
    return true;
}

Win32Error MemoryFile::ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) const {
    const std::shared_lock guard(m_lock);
    const std::uint64_t left = position < m_bytes.size() ? m_bytes.size() - position : 0;
    done = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, left));
    if (done != 0) std::memcpy(buffer, m_bytes.data() + position, done);
    return kErrorSuccess;
}

Win32Error MemoryFile::WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) {
    done = 0;
    if (size == 0) return kErrorSuccess;
    if (position > kLargestFile - size || !m_budget.Take(size)) return kErrorDiskFull;
    const std::lock_guard guard(m_lock);
    if (position + size > m_bytes.size()) m_bytes.resize(static_cast<std::size_t>(position + size));
    std::memcpy(m_bytes.data() + position, buffer, size);
    m_size = m_bytes.size();
    done = size;
    return kErrorSuccess;
}

Win32Error MemoryFile::SetSize(std::uint64_t size) {
    if (size > kLargestFile) return kErrorDiskFull;
    const std::lock_guard guard(m_lock);
    m_bytes.resize(static_cast<std::size_t>(size));
    m_size = size;
    return kErrorSuccess;
}

std::unique_ptr<IFileStream> OpenMemoryFile(std::shared_ptr<MemoryFile> file) {
    return std::make_unique<MemoryStream>(std::move(file));
}

}  // namespace roundup
