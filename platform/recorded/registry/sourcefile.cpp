#include "platform/recorded/registry/sourcefile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargestFile = std::uintmax_t{2} << 30;

fs::path PathOf(const std::string& file) { return fs::path(std::u8string(file.begin(), file.end())); }

SourceError FileFault(const std::string& file, std::string what) {
    return {file, SourceError::Place::None, 0, std::move(what)};
}

template <class Text>
SourceError LineFault(const std::string& file, Text text, std::size_t position, std::string what) {
    const auto before = text.substr(0, std::min(position, text.size()));
    const auto lines = std::count(before.begin(), before.end(), typename Text::value_type{'\n'});
    return {file, SourceError::Place::Line, static_cast<std::uint64_t>(lines) + 1, std::move(what)};
}

}  // namespace

SourceStatus ReadSourceFile(const std::string& file, SourceBytes& bytes) {
    const fs::path path = PathOf(file);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) return FileFault(file, "there is no such file");
    if (error) return FileFault(file, "cannot be read: " + error.message());
    // A pipe or a device would be read for ever.
    if (status.type() != fs::file_type::regular) return FileFault(file, "is no ordinary file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) return FileFault(file, "cannot be read: " + error.message());
    if (size > kLargestFile) return FileFault(file, "is larger than 2 GiB");
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return FileFault(file, "cannot be opened");
    bytes.size = static_cast<std::size_t>(size);
    bytes.data.reset(new std::byte[bytes.size]);
    stream.read(reinterpret_cast<char*>(bytes.data.get()), static_cast<std::streamsize>(bytes.size));
    if (stream.gcount() != static_cast<std::streamsize>(bytes.size))
        return FileFault(file, "cannot be read to its end");
    return {};
}

SourceStatus CheckInside(const std::string& folder, const std::string& file) {
    std::error_code error;
    const fs::path root = fs::canonical(PathOf(folder), error);
    if (error) return FileFault(folder, "cannot be read: " + error.message());
    const fs::path target = fs::canonical(PathOf(file), error);
    if (error) return FileFault(file, "cannot be read: " + error.message());
    const auto [rootEnd, ignored] = std::mismatch(root.begin(), root.end(), target.begin(), target.end());
    if (rootEnd != root.end()) return FileFault(file, "is a symbolic link to a place outside of its source");
    return {};
}

SourceStatus ListSourceFolder(const std::string& folder, std::u16string_view ending, std::vector<std::string>& names) {
    std::vector<std::u16string> found;
    std::error_code error;
    for (fs::directory_iterator at(PathOf(folder), error); !error && at != fs::directory_iterator();
         at.increment(error)) {
        const std::u8string name = at->path().filename().u8string();
        std::u16string wide;
        std::size_t fault = 0;
        const std::string_view narrow(reinterpret_cast<const char*>(name.data()), name.size());
        if (!FromUtf8Strict(narrow, wide, fault)) return FileFault(folder, "holds a file whose name is no UTF-8");
        const std::size_t start = wide.size() - std::min(wide.size(), ending.size());
        if (EqualsNoCase(std::u16string_view(wide).substr(start), ending)) found.push_back(std::move(wide));
    }
    if (error) return FileFault(folder, "cannot be read: " + error.message());
    // Names that differ in case alone have to have an order, too.
    std::sort(found.begin(), found.end(), [](const std::u16string& a, const std::u16string& b) {
        const auto order = CompareFolded(a, b);
        return order < 0 || (order == 0 && a < b);
    });
    for (const std::u16string& name : found) names.push_back(ToUtf8(name));
    return {};
}

std::string FolderAbove(const std::string& folder) {
    fs::path path = PathOf(folder).lexically_normal();
    if (!path.has_filename()) path = path.parent_path();
    const std::u8string above = path.parent_path().empty() ? u8"." : path.parent_path().u8string();
    return std::string(above.begin(), above.end());
}

bool SourceFileExists(const std::string& file) noexcept {
    std::error_code error;
    return fs::symlink_status(PathOf(file), error).type() != fs::file_type::not_found;
}

SourceError OutOfMemoryFault(const std::string& file) {
    return FileFault(file, "is too large for the memory that there is");
}

SourceError FaultAt(const std::string& file, std::string_view text, std::size_t position, std::string what) {
    return LineFault(file, text, position, std::move(what));
}

SourceError FaultAt(const std::string& file, std::u16string_view text, std::size_t position, std::string what) {
    return LineFault(file, text, position, std::move(what));
}

}  // namespace roundup
