#include "platform/recorded/resources/packagetexts.h"

#include <vector>

#include "platform/recorded/icons/filebytes.h"
#include "platform/recorded/registrytext.h"
#include "platform/recorded/resources/prifile.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::u16string_view kPackages =
    u"Software\\Classes\\Local "
    u"Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository\\Packages\\";
constexpr std::u16string_view kScheme = u"ms-resource:";
constexpr std::u16string_view kDefaultFolder = u"Resources/";
constexpr std::u16string_view kDefaultLanguage = u"en-US";

std::u16string UserLanguage(IRegistry& registry) {
    static constexpr const char16_t* kPlaces[][2] = {{u"Control Panel\\International\\User Profile", u"LocaleName"},
                                                     {u"Control Panel\\International", u"LocaleName"}};
    for (const auto& [key, name] : kPlaces) {
        auto text = ReadRegistryText(registry, kHkeyCurrentUser, key, name);
        if (text && !text->empty()) return std::move(*text);
    }
    return std::u16string(kDefaultLanguage);
}

// The index of the package, or the one that is named itself.
std::u16string IndexPath(std::u16string_view package, IRegistry& registry) {
    if (package.find(u':') != std::u16string_view::npos) return std::u16string(package);
    // A separator in the name would lead to another key.
    if (package.empty() || package.find(u'\\') != std::u16string_view::npos) return {};
    const std::u16string key = std::u16string(kPackages).append(package);
    const auto folder = ReadRegistryText(registry, kHkeyCurrentUser, key.c_str(), u"PackageRootFolder");
    return folder && !folder->empty() ? *folder + u"\\resources.pri" : std::u16string();
}

// "//map/path" and "///path" name an item of a map, "/path" one of the package's own, and a bare path one below the
// folder of texts. Either kind is tried below that folder as well as by itself.
std::vector<std::u16string> ItemPaths(std::u16string_view uri) {
    const bool bare = !uri.starts_with(u'/');
    if (uri.starts_with(u"//")) uri = uri.substr(std::min(uri.find(u'/', 2), uri.size()));
    while (uri.starts_with(u'/')) uri.remove_prefix(1);
    std::u16string whole(uri);
    std::u16string below = std::u16string(kDefaultFolder).append(uri);
    return bare ? std::vector{below, whole} : std::vector{whole, below};
}

}  // namespace

std::optional<std::u16string> FindPackageText(std::u16string_view source, IFileSystem& files, IRegistry& registry) {
    const std::size_t mark = source.find(u'?');
    if (!source.starts_with(u"@{") || !source.ends_with(u'}') || mark == std::u16string_view::npos) return std::nullopt;
    std::u16string_view uri = source.substr(mark + 1, source.size() - mark - 2);
    if (!StartsWithNoCase(uri, kScheme)) return std::nullopt;
    uri.remove_prefix(kScheme.size());
    const std::u16string path = IndexPath(source.substr(2, mark - 2), registry);
    if (path.empty()) return std::nullopt;
    const FileBytes file(files, path.c_str());
    std::vector<std::byte> bytes;
    if (!file.IsOpen() || file.Size() > PriFile::kLargestFile) return std::nullopt;
    if (!file.Read(0, static_cast<std::uint32_t>(file.Size()), bytes)) return std::nullopt;
    PriFile index;
    if (!index.Open(ByteView(bytes))) return std::nullopt;
    const std::u16string language = UserLanguage(registry);
    for (const std::u16string& item : ItemPaths(uri)) {
        if (auto text = index.FindText(item, language)) return text;
    }
    return std::nullopt;
}

}  // namespace roundup
