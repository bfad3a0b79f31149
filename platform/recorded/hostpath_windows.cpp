#include <fcntl.h>
#include <io.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/recorded/crtfile.h"
#include "platform/recorded/hostpath.h"

namespace roundup {

namespace {

// What one call of _read can be asked for.
constexpr std::size_t kLargestRead = std::size_t{1} << 30;

struct FreeText {
    void operator()(wchar_t* text) const noexcept { free(text); }
};

}  // namespace

// A link counts as what it is: the run-time library cannot tell where it leads.
int HostQueryPath(const std::string& path, SourceKind& kind, std::uint64_t& size) {
    return crt::Query(crt::Wide(path), kind, size);
}

bool HostPathExists(const std::string& path) noexcept {
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    return HostQueryPath(path, kind, size) == 0;
}

int HostRealPath(const std::string& path, std::string& real) {
    const std::unique_ptr<wchar_t, FreeText> text(_wfullpath(nullptr, crt::Wide(path).c_str(), 0));
    if (!text) return errno;
    std::wstring_view whole = text.get();
    // All but the backslash of a drive's root.
    while (whole.size() > 3 && whole.back() == L'\\') whole.remove_suffix(1);
    real = crt::Narrow(whole);
    return _waccess(text.get(), 0) == 0 ? 0 : errno;
}

int HostListNames(const std::string& folder, std::vector<std::string>& names) {
    return crt::List(
        crt::Wide(folder),
        [](void* context, std::wstring_view name, SourceKind) {
            static_cast<std::vector<std::string>*>(context)->push_back(crt::Narrow(name));
        },
        &names);
}

int HostReadFile(const std::string& path, void* buffer, std::size_t size, std::size_t& done) {
    done = 0;
    int descriptor = -1;
    if (const int fault = crt::File::Open(crt::Wide(path), _O_RDONLY, descriptor); fault != 0) return fault;
    const crt::File file(descriptor);
    while (done < size) {
        const auto wanted = static_cast<unsigned>(std::min(size - done, kLargestRead));
        const int got = _read(file.Get(), static_cast<char*>(buffer) + done, wanted);
        if (got < 0) return errno;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return 0;
}

std::string HostFolderAbove(std::string_view path) {
    while (path.size() > 1 && (path.back() == '/' || path.back() == '\\')) path.remove_suffix(1);
    const std::size_t separator = path.find_last_of("/\\");
    if (separator == std::string_view::npos) return ".";
    return std::string(path.substr(0, std::max<std::size_t>(separator, 1)));
}

}  // namespace roundup
