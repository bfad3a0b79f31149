#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/recorded/hostpath.h"

namespace roundup {

namespace {

// What one call of read can be asked for.
constexpr std::size_t kLargestRead = std::size_t{1} << 30;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};
struct FreeText {
    void operator()(char* text) const noexcept { std::free(text); }
};

}  // namespace

int HostQueryPath(const std::string& path, SourceKind& kind, std::uint64_t& size) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return errno;
    kind = S_ISREG(info.st_mode) ? SourceKind::File : S_ISDIR(info.st_mode) ? SourceKind::Folder : SourceKind::Other;
    size = kind == SourceKind::File ? static_cast<std::uint64_t>(info.st_size) : 0;
    return 0;
}

bool HostPathExists(const std::string& path) noexcept {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

int HostRealPath(const std::string& path, std::string& real) {
    const std::unique_ptr<char, FreeText> text(realpath(path.c_str(), nullptr));
    if (!text) return errno;
    real = text.get();
    return 0;
}

int HostListNames(const std::string& folder, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    if (!open) return errno;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(open.get());
        if (entry == nullptr) return errno;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
}

int HostReadFile(const std::string& path, void* buffer, std::size_t size, std::size_t& done) {
    done = 0;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return errno;
    int fault = 0;
    while (done < size) {
        const ssize_t got = read(file, static_cast<char*>(buffer) + done, std::min(size - done, kLargestRead));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fault = errno;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    close(file);
    return fault;
}

std::string HostFolderAbove(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const std::size_t separator = path.rfind('/');
    if (separator == std::string_view::npos) return ".";
    return std::string(path.substr(0, std::max<std::size_t>(separator, 1)));
}

}  // namespace roundup
