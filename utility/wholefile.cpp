#include "utility/wholefile.h"

#include "platform/machine.h"

namespace roundup {
namespace {

class OpenedFile {
  public:
    explicit OpenedFile(const char16_t* path) : m_files(CurrentMachine().Files()) {
        if (m_files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, m_file) != kErrorSuccess) {
            m_file = kInvalidFile;
        }
    }
    ~OpenedFile() {
        if (m_file != kInvalidFile) m_files.Close(m_file);
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    bool Size(std::uint64_t& size) { return m_file != kInvalidFile && m_files.GetSize(m_file, size) == kErrorSuccess; }
    bool Read(std::byte* target, std::uint32_t size) {
        while (size > 0) {
            std::uint32_t done = 0;
            if (m_files.Read(m_file, target, size, done) != kErrorSuccess || done == 0 || done > size) return false;
            target += done;
            size -= done;
        }
        return true;
    }

  private:
    IFileSystem& m_files;
    FileHandle m_file = kInvalidFile;
};

}  // namespace

bool ReadWholeFile(const char16_t* path, std::uint32_t limit, std::vector<std::byte>& bytes, std::size_t front) {
    bytes.clear();
    if (path == nullptr || path[0] == u'\0') return false;
    OpenedFile file(path);
    std::uint64_t size = 0;
    if (!file.Size(size) || size > limit) return false;
    bytes.resize(front + static_cast<std::size_t>(size));
    if (file.Read(bytes.data() + front, static_cast<std::uint32_t>(size))) return true;
    bytes.clear();
    return false;
}

}  // namespace roundup
