#include "platform/recorded/memorysource.h"

#include <algorithm>
#include <cstring>

#include "platform/recorded/winpath.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

class BytesStream final : public IFileStream {
  public:
    explicit BytesStream(const std::string& bytes) : m_bytes(bytes) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        const std::uint64_t left = position < m_bytes.size() ? m_bytes.size() - position : 0;
        done = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, left));
        if (done != 0) std::memcpy(buffer, m_bytes.data() + position, done);
        return kErrorSuccess;
    }
    Win32Error WriteAt(std::uint64_t, const void*, std::uint32_t, std::uint32_t& done) override {
        done = 0;
        return kErrorAccessDenied;
    }
    Win32Error GetSize(std::uint64_t& size) override {
        size = m_bytes.size();
        return kErrorSuccess;
    }
    Win32Error SetSize(std::uint64_t) override { return kErrorAccessDenied; }

  private:
    const std::string& m_bytes;  // of the source, which outlives its streams
};

}  // namespace

bool MemorySource::FoldedLess::operator()(std::u16string_view a, std::u16string_view b) const noexcept {
    return CompareFolded(a, b) < 0;
}

void MemorySource::AddFile(std::u16string_view path, std::string bytes) { Make(path).bytes = std::move(bytes); }

void MemorySource::AddFolder(std::u16string_view path) { (void)Make(path); }

MemorySource::Node& MemorySource::Make(std::u16string_view path) {
    Node* node = &m_root;
    while (!path.empty()) {
        const std::u16string_view part = TakePart(path);
        auto found = node->entries.find(part);
        if (found == node->entries.end()) found = node->entries.emplace(std::u16string(part), Node{}).first;
        node = &found->second;
    }
    return *node;
}

const MemorySource::Node* MemorySource::Find(std::u16string_view path) const {
    const Node* node = &m_root;
    while (!path.empty()) {
        const auto found = node->entries.find(TakePart(path));
        if (found == node->entries.end()) return nullptr;
        node = &found->second;
    }
    return node;
}

Win32Error MemorySource::List(std::u16string_view folder, std::vector<SourceEntry>& entries) {
    const Node* node = Find(folder);
    if (node == nullptr || node->bytes) return kErrorPathNotFound;
    entries.reserve(node->entries.size());
    for (const auto& [name, entry] : node->entries) {
        if (entry.bytes) {
            entries.push_back({name, SourceKind::File, entry.bytes->size()});
        } else {
            entries.push_back({name, SourceKind::Folder, 0});
        }
    }
    return kErrorSuccess;
}

Win32Error MemorySource::GetSize(std::u16string_view file, std::uint64_t& size) {
    const Node* node = Find(file);
    if (node == nullptr || !node->bytes) return kErrorFileNotFound;
    size = node->bytes->size();
    return kErrorSuccess;
}

Win32Error MemorySource::Open(std::u16string_view file, std::unique_ptr<IFileStream>& stream) {
    const Node* node = Find(file);
    if (node == nullptr || !node->bytes) return kErrorFileNotFound;
    stream = std::make_unique<BytesStream>(*node->bytes);
    return kErrorSuccess;
}

Win32Error MemorySource::ReadLink(std::u16string_view, LinkTarget&) { return kErrorNotAReparsePoint; }

}  // namespace roundup
