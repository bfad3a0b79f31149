#include "host/why.h"

#include <algorithm>
#include <iterator>

#include "host/textout.h"
#include "utility/formattext.h"
#include "utility/guid.h"
#include "utility/reg.h"

namespace roundup::host {

namespace {

struct FieldSource {
    std::string_view field;
    const char16_t* values[4];  // of its Uninstall keys and of the installer's books, the first that counts first
    const char* otherwise;
};

constexpr FieldSource kSources[] = {
    {"name", {u"DisplayName"}, nullptr},
    {"publisher", {u"Publisher"}, nullptr},
    {"installDate", {u"InstallDate"}, "the last change of its key"},
    {"key", {}, "the name of the key"},
    {"version", {u"DisplayVersion"}, nullptr},
    {"code", {}, "the name of the key, or what the books of Windows Installer call it"},
    {"size", {u"EstimatedSize"}, "the sizes of the files in its folders"},
    {"installLocation",
     {u"InstallLocation", u"Inno Setup: App Path", u"LocationRoot", u"UninstallString"},
     "the folder of its programs"},
    {"realInstallLocation", {}, "the location, with its mount points followed"},
    {"originalInstallLocation", {u"InstallLocation", u"Inno Setup: App Path", u"LocationRoot"}, nullptr},
    {"installSource", {u"InstallSource"}, nullptr},
    {"package", {u"LocalPackage"}, nullptr},
    {"uninstallProgram", {u"UninstallString"}, nullptr},
    {"iconProgram", {u"DisplayIcon"}, "the first program that its uninstaller names"},
    {"iconSize", {}, "the picture of the file that the icon is from, or of its package"},
    {"iconChecksum", {}, "the bytes of that picture"},
    {"type", {}, "the suite that its package, its key or its parts belong to"},
    {"typeDescription", {}, "that suite with its version"},
    {"parentKey", {u"ParentKeyName"}, nullptr},
    {"parentName", {u"ParentDisplayName", u"RegistryLocation"}, nullptr},
};

// Empty for a value that is not there and for one that counts as such.
std::u16string ReadValue(KeyHandle root, const std::u16string& path, bool view64, const char16_t* name) {
    CWFYRegKey key;
    RegValueBlock value;
    if (Failed(key.Open(root, path.c_str(), view64, false)) || Failed(key.QueryValue(name, value))) return {};
    std::uint32_t number = 0;
    if (value.Type() == kRegDword && Succeeded(key.GetDword(name, number))) {
        return number != 0 ? std::u16string(FormatText(u"%u", number)) : std::u16string();
    }
    OwnedString text;
    (void)key.GetString(name, text);
    return std::u16string(text.View());
}

}  // namespace

FieldOrigins::FieldOrigins(const CApp& app) {
    AddUninstallKeys(app);
    AddBooks(app);
}

void FieldOrigins::AddUninstallKeys(const CApp& app) {
    constexpr struct {
        std::uint32_t origin;
        KeyHandle root;
        bool view64;
    } kRoots[] = {
        {AppOrigin::kMachine32, kHkeyLocalMachine, false},
        {AppOrigin::kMachine64, kHkeyLocalMachine, true},
        {AppOrigin::kUser32, kHkeyCurrentUser, false},
        {AppOrigin::kUser64, kHkeyCurrentUser, true},
    };
    for (const auto& [origin, root, view64] : kRoots) {
        if ((app.dwOrigins & origin) == 0) continue;
        std::u16string path(u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\");
        m_places.push_back({root, path.append(app.pwszKeyString.View()), view64});
    }
}

// The books that each user has of the product.
void FieldOrigins::AddBooks(const CApp& app) {
    constexpr std::u16string_view kBooks = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
    if ((app.dwOrigins & AppOrigin::kInstaller) == 0 || app.ProductCode.IsNil()) return;
    const std::u16string product(FormatGuid(app.ProductCode, GuidForm::Packed));
    CWFYRegKey users;
    if (Failed(users.Open(kHkeyLocalMachine, std::u16string(kBooks).c_str(), true, false))) return;
    OwnedString user;
    while (Succeeded(users.EnumKey(user))) {
        std::u16string path(kBooks);
        path.append(u"\\").append(user.View()).append(u"\\Products\\").append(product).append(u"\\InstallProperties");
        CWFYRegKey key;
        if (Succeeded(key.Open(kHkeyLocalMachine, path.c_str(), true, false))) {
            m_places.push_back({kHkeyLocalMachine, std::move(path), true});
        }
    }
}

std::vector<std::string> FieldOrigins::Keys() const {
    std::vector<std::string> lines;
    lines.reserve(m_places.size());
    for (const auto& [root, path, view64] : m_places) {
        lines.push_back("[" + std::to_string(lines.size() + 1) + "] " +
                        (root == kHkeyLocalMachine ? "HKLM\\" : "HKCU\\") + Printable(path) +
                        (view64 ? " (64-bit view)" : ""));
    }
    return lines;
}

std::vector<std::string> FieldOrigins::Of(std::string_view field, const std::string& shown) const {
    const auto source = std::ranges::find(kSources, field, &FieldSource::field);
    if (source == std::end(kSources)) return {};
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const auto& [root, path, view64] = m_places[i];
        for (const char16_t* name : source->values) {
            if (name == nullptr) break;
            const std::u16string value = ReadValue(root, path, view64, name);
            if (value.empty()) continue;
            const std::string text = Printable(value);
            lines.push_back(Printable(name) + " of [" + std::to_string(i + 1) + "]" +
                            (text != shown ? ": " + text : ""));
            break;
        }
    }
    if (lines.empty()) {
        lines.emplace_back(source->otherwise != nullptr ? source->otherwise
                                                        : "another record of the same application, or its package");
    }
    return lines;
}

}  // namespace roundup::host
