#include "platform/recorded/installer/databasefile.h"

#include <algorithm>
#include <cstring>

namespace roundup {

std::unique_ptr<DatabaseFile> DatabaseFile::Open(IFileSystem& files, const char16_t* path) {
    FileHandle file = kInvalidFile;
    if (files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, file) != kErrorSuccess) return nullptr;
    std::uint64_t size = 0;
    if (files.GetSize(file, size) == kErrorSuccess && size > 0 && size <= kLargestSize) {
        return std::unique_ptr<DatabaseFile>(new DatabaseFile(files, file, size));
    }
    files.Close(file);
    return nullptr;
}

DatabaseFile::~DatabaseFile() { m_files.Close(m_file); }

bool DatabaseFile::Read(std::uint64_t offset, std::span<std::byte> target) {
    if (offset > m_size || target.size() > m_size - offset) return false;
    const std::lock_guard guard(m_lock);
    if (target.size() >= kBlock) return ReadFile(offset, target.data(), target.size());
    while (!target.empty()) {
        const std::byte* block = BlockAt(offset / kBlock);
        if (block == nullptr) return false;
        const std::size_t within = offset % kBlock;
        const std::size_t part = std::min<std::size_t>(target.size(), kBlock - within);
        std::memcpy(target.data(), block + within, part);
        target = target.subspan(part);
        offset += part;
    }
    return true;
}

// Null when the block cannot be read. The last one of the file may be short; nobody gets what is behind its end.
const std::byte* DatabaseFile::BlockAt(std::uint64_t index) {
    const auto found = m_blocks.find(index);
    if (found != m_blocks.end()) return found->second.get();
    const std::uint64_t size = std::min(kBlock, m_size - index * kBlock);
    auto block = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(size));
    if (!ReadFile(index * kBlock, block.get(), size)) return nullptr;
    return m_blocks.emplace(index, std::move(block)).first->second.get();
}

bool DatabaseFile::ReadFile(std::uint64_t offset, std::byte* target, std::uint64_t size) {
    if (m_files.SetPosition(m_file, offset) != kErrorSuccess) return false;
    std::uint32_t done = 0;
    return m_files.Read(m_file, target, static_cast<std::uint32_t>(size), done) == kErrorSuccess && done == size;
}

}  // namespace roundup
