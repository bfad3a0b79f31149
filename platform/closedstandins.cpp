#include "platform/closedstandins.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <string_view>

namespace roundup {

namespace {

class FileObject final : public IProbeIO {
  public:
    explicit FileObject(IFileSystem& files) noexcept : m_files(files) {}

    std::uint32_t Reserved0() override { return 0; }
    std::uint32_t Release() override {
        const std::uint32_t left = --m_count;
        if (left == 0) delete this;
        return left;
    }
    std::int64_t Open(const char16_t* path, std::uint32_t access, std::uint32_t share,
                      std::uint32_t disposition) override {
        CloseFile();
        return m_files.Open(path, access, share, disposition, m_file) == kErrorSuccess ? 0 : -1;
    }
    std::int32_t Read(std::int64_t, void* buffer, std::uint32_t size, std::uint32_t* done) override {
        return static_cast<std::int32_t>(m_files.Read(m_file, buffer, size, *done));
    }
    std::int32_t Write(std::int64_t, const void* buffer, std::uint32_t size, std::uint32_t* done) override {
        return static_cast<std::int32_t>(m_files.Write(m_file, buffer, size, *done));
    }
    std::uint32_t Reserved5() override { return 0; }
    std::uint32_t Reserved6() override { return 0; }
    void Close(std::int64_t) override { CloseFile(); }

  private:
    ~FileObject() { CloseFile(); }
    void CloseFile() {
        if (m_file != kInvalidFile) m_files.Close(m_file);
        m_file = kInvalidFile;
    }

    IFileSystem& m_files;
    FileHandle m_file = kInvalidFile;
    std::atomic<std::uint32_t> m_count{1};
};

// Parts with masks that one path may have; each multiplies the folders to look into.
constexpr int kMostMasks = 16;

// Tries the entries that the first mask of rest matches below folder, in order, each with what follows.
bool Expand(IFileSystem& files, const std::u16string& folder, std::u16string_view rest, int masks,
            std::u16string& expanded) {
    const std::size_t mask = rest.find_first_of(u"*?");
    if (mask == std::u16string_view::npos) {
        expanded = folder + std::u16string(rest);
        return files.GetAttributes(expanded.c_str()) != kInvalidAttributes;
    }
    if (masks == 0) return false;
    const std::size_t start = rest.substr(0, mask).find_last_of(u"\\/") + 1;
    const std::size_t end = std::min(rest.find_first_of(u"\\/", mask), rest.size());
    const std::u16string above = folder + std::u16string(rest.substr(0, start));
    const std::u16string pattern = above + std::u16string(rest.substr(start, end - start));
    FindHandle find = kInvalidFile;
    FindData data;
    if (files.FindFirst(pattern.c_str(), find, data) != kErrorSuccess) return false;
    bool found = false;
    do {
        const std::u16string_view name(data.name);
        if (name == u"." || name == u"..") continue;
        // What follows needs a folder.
        if (end < rest.size() && (data.attributes & kAttributeDirectory) == 0) continue;
        found = Expand(files, above + data.name, rest.substr(end), masks - 1, expanded);
    } while (!found && files.FindNext(find, data) == kErrorSuccess);
    files.FindClose(find);
    return found;
}

}  // namespace

IProbeIO* MakeFileObject(IFileSystem& files) { return new (std::nothrow) FileObject(files); }

bool ExpandFirstMatch(IFileSystem& files, const char16_t* path, std::u16string& expanded) {
    expanded.clear();
    std::u16string found;
    if (!Expand(files, {}, path, kMostMasks, found)) return false;
    expanded = std::move(found);
    return !expanded.empty();
}

}  // namespace roundup
