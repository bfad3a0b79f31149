#include "platform/recorded/registry/sourcefile.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/recorded/hostpath.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t{2} << 30;

SourceError FileFault(const std::string& file, std::string what) {
    return {file, SourceError::Place::None, 0, std::move(what)};
}

SourceError ReadFault(const std::string& file, int fault) {
    return FileFault(file, "cannot be read: " + std::generic_category().message(fault));
}

template <class Text>
SourceError LineFault(const std::string& file, Text text, std::size_t position, std::string what) {
    const auto before = text.substr(0, std::min(position, text.size()));
    const auto lines = std::count(before.begin(), before.end(), typename Text::value_type{'\n'});
    return {file, SourceError::Place::Line, static_cast<std::uint64_t>(lines) + 1, std::move(what)};
}

}  // namespace

SourceStatus ReadSourceFile(const std::string& file, SourceBytes& bytes) {
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (const int fault = HostQueryPath(file, kind, size); fault == ENOENT || fault == ENOTDIR) {
        return FileFault(file, "there is no such file");
    } else if (fault != 0) {
        return ReadFault(file, fault);
    }
    // A pipe or a device would be read for ever.
    if (kind != SourceKind::File) return FileFault(file, "is no ordinary file");
    if (size > kLargestFile) return FileFault(file, "is larger than 2 GiB");
    bytes.size = static_cast<std::size_t>(size);
    bytes.data.reset(new std::byte[bytes.size]);
    std::size_t done = 0;
    if (const int fault = HostReadFile(file, bytes.data.get(), bytes.size, done); fault != 0) {
        return ReadFault(file, fault);
    }
    if (done != bytes.size) return FileFault(file, "cannot be read to its end");
    return {};
}

SourceStatus CheckInside(const std::string& folder, const std::string& file) {
    std::string root;
    std::string target;
    if (const int fault = HostRealPath(folder, root); fault != 0) return ReadFault(folder, fault);
    if (const int fault = HostRealPath(file, target); fault != 0) return ReadFault(file, fault);
    if (root.back() != '/') root += '/';
    if (!target.starts_with(root)) return FileFault(file, "is a symbolic link to a place outside of its source");
    return {};
}

SourceStatus ListSourceFolder(const std::string& folder, std::u16string_view ending, std::vector<std::string>& names) {
    std::vector<std::string> all;
    if (const int fault = HostListNames(folder, all); fault != 0) return ReadFault(folder, fault);
    std::vector<std::u16string> found;
    for (const std::string& name : all) {
        std::u16string wide;
        std::size_t fault = 0;
        if (!FromUtf8Strict(name, wide, fault)) return FileFault(folder, "holds a file whose name is no UTF-8");
        const std::size_t start = wide.size() - std::min(wide.size(), ending.size());
        if (EqualsNoCase(std::u16string_view(wide).substr(start), ending)) found.push_back(std::move(wide));
    }
    // Names that differ in case alone have to have an order, too.
    std::sort(found.begin(), found.end(), [](const std::u16string& a, const std::u16string& b) {
        const auto order = CompareFolded(a, b);
        return order < 0 || (order == 0 && a < b);
    });
    for (const std::u16string& name : found) names.push_back(ToUtf8(name));
    return {};
}

bool SourceFileExists(const std::string& file) noexcept { return HostPathExists(file); }

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
