#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/recorded/crtfile.h"
#include "utility/utf.h"

namespace roundup::crt {

namespace {

// Attributes of winnt.h, which the search functions hand on whole.
constexpr unsigned kDirectoryAttribute = 0x10;
constexpr unsigned kReparsePointAttribute = 0x400;

SourceKind KindOf(unsigned attributes) noexcept {
    if ((attributes & kReparsePointAttribute) != 0) return SourceKind::Link;
    return (attributes & kDirectoryAttribute) != 0 ? SourceKind::Folder : SourceKind::File;
}

// A search that is closed at the end; its number is -1 when there is nothing to find.
class Search {
  public:
    Search(const std::wstring& mask, _wfinddatai64_t& found) noexcept : number(_wfindfirsti64(mask.c_str(), &found)) {}
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ~Search() {
        if (number != -1) _findclose(number);
    }

    const std::intptr_t number;
};

// A drive's root and the share of a network path have no entry above them that a search could find.
bool IsRoot(const std::wstring& path) noexcept { return path.empty() || path.back() == L'\\' || path.back() == L':'; }

}  // namespace

std::wstring Wide(std::string_view path) {
    const std::u16string text = FromUtf8(path);
    std::wstring wide(text.begin(), text.end());
    for (wchar_t& unit : wide) {
        if (unit == L'/') unit = L'\\';
    }
    return wide;
}

std::string Narrow(std::wstring_view path) {
    std::u16string text(path.begin(), path.end());
    for (char16_t& unit : text) {
        if (unit == u'\\') unit = u'/';
    }
    return ToUtf8(text);
}

int Query(const std::wstring& path, SourceKind& kind, std::uint64_t& size, std::wstring* name) {
    if (path.find_first_of(L"*?") != std::wstring::npos) return ENOENT;
    size = 0;
    if (IsRoot(path)) {
        kind = SourceKind::Folder;
        return _waccess(path.c_str(), 0) == 0 ? 0 : errno;
    }
    _wfinddatai64_t found{};
    const Search search(path, found);
    if (search.number == -1) return errno;
    kind = KindOf(found.attrib);
    if (kind == SourceKind::File) size = static_cast<std::uint64_t>(found.size);
    if (name != nullptr) *name = found.name;
    return 0;
}

int List(const std::wstring& folder, void (*visit)(void* context, std::wstring_view name, SourceKind kind),
         void* context) {
    _wfinddatai64_t found{};
    const Search search(folder + (IsRoot(folder) ? L"*" : L"\\*"), found);
    if (search.number == -1) return errno;
    do {
        const std::wstring_view name = found.name;
        if (name != L"." && name != L"..") visit(context, name, KindOf(found.attrib));
    } while (_wfindnexti64(search.number, &found) == 0);
    return errno == ENOENT ? 0 : errno;
}

File::~File() {
    if (m_descriptor >= 0) _close(m_descriptor);
}

int File::Open(const std::wstring& path, int flags, int& descriptor) {
    return _wsopen_s(&descriptor, path.c_str(), flags | _O_BINARY | _O_NOINHERIT, _SH_DENYNO, _S_IREAD | _S_IWRITE);
}

}  // namespace roundup::crt
