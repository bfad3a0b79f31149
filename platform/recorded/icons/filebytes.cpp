#include "platform/recorded/icons/filebytes.h"

namespace roundup {

FileBytes::FileBytes(IFileSystem& files, const char16_t* path) : m_files(files) {
    if (files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, m_file) != kErrorSuccess) {
        m_file = kInvalidFile;
        return;
    }
    if (files.GetSize(m_file, m_size) != kErrorSuccess) m_size = 0;
}

FileBytes::~FileBytes() {
    if (IsOpen()) m_files.Close(m_file);
}

bool FileBytes::Read(std::uint64_t offset, std::uint32_t size, std::vector<std::byte>& bytes) const {
    if (!IsOpen() || offset > m_size || size > m_size - offset) return false;
    bytes.resize(size);
    std::uint32_t done = 0;
    return m_files.SetPosition(m_file, offset) == kErrorSuccess &&
           m_files.Read(m_file, bytes.data(), size, done) == kErrorSuccess && done == size;
}

}  // namespace roundup
