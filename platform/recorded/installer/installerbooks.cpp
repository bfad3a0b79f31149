#include "platform/recorded/installer/installerbooks.h"

#include <algorithm>
#include <cstring>

#include "platform/installer.h"
#include "platform/recorded/installer/installeranswer.h"
#include "utility/guid.h"

namespace roundup {

namespace {

constexpr std::uint32_t kAccess = kKeyRead | kKeyWow64Key64;
constexpr std::u16string_view kUsers = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
// Products as they are published, for one user and for the machine.
constexpr std::u16string_view kUserProducts = u"Software\\Microsoft\\Installer\\Products\\";
constexpr std::u16string_view kMachineProducts = u"SOFTWARE\\Classes\\Installer\\Products\\";

// A property and the value that holds it ("MsiGetProductInfo" of the Windows documentation).
struct Property {
    std::u16string_view name;
    const char16_t* value;
    std::u16string_view subKey;
};
constexpr Property kPublished[] = {
    {u"AssignmentType", u"Assignment", u""}, {u"AuthorizedLUAApp", u"AuthorizedLUAApp", u""},
    {u"InstanceType", u"InstanceType", u""}, {u"Language", u"Language", u""},
    {u"PackageCode", u"PackageCode", u""},   {u"PackageName", u"PackageName", u"\\SourceList"},
    {u"ProductIcon", u"ProductIcon", u""},   {u"ProductName", u"ProductName", u""},
    {u"Transforms", u"Transforms", u""},     {u"Version", u"Version", u""},
};
constexpr Property kInstalled[] = {
    {u"HelpLink", u"HelpLink", u""},           {u"HelpTelephone", u"HelpTelephone", u""},
    {u"InstallDate", u"InstallDate", u""},     {u"InstallLocation", u"InstallLocation", u""},
    {u"InstallSource", u"InstallSource", u""}, {u"InstalledProductName", u"DisplayName", u""},
    {u"LocalPackage", u"LocalPackage", u""},   {u"ProductID", u"ProductID", u""},
    {u"Publisher", u"Publisher", u""},         {u"RegCompany", u"RegCompany", u""},
    {u"RegOwner", u"RegOwner", u""},           {u"URLInfoAbout", u"URLInfoAbout", u""},
    {u"URLUpdateInfo", u"URLUpdateInfo", u""}, {u"VersionMajor", u"VersionMajor", u""},
    {u"VersionMinor", u"VersionMinor", u""},   {u"VersionString", u"DisplayVersion", u""},
};

template <std::size_t N>
const Property* FindProperty(const Property (&properties)[N], std::u16string_view name) noexcept {
    const auto found = std::ranges::find(properties, name, &Property::name);
    return found != std::end(properties) ? found : nullptr;
}

// The form in which codes name keys and values; empty for what is no code.
std::u16string Packed(const char16_t* code) {
    const Guid guid = code != nullptr ? ParseGuid(code, GuidForm::Braced) : Guid{};
    return guid.IsNil() ? std::u16string() : std::u16string(GuidText(guid, GuidForm::Packed).View());
}

class OpenKey {
  public:
    OpenKey(IRegistry& registry, KeyHandle root, const std::u16string& path) : m_registry(registry) {
        if (registry.OpenKey(root, path.c_str(), kAccess, m_key) != kErrorSuccess) m_key = 0;
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    ~OpenKey() {
        if (m_key != 0) m_registry.CloseKey(m_key);
    }
    KeyHandle Get() const noexcept { return m_key; }

  private:
    IRegistry& m_registry;
    KeyHandle m_key = 0;
};

}  // namespace

std::vector<std::u16string> InstallerBooks::SubKeys(KeyHandle root, const std::u16string& path) {
    std::vector<std::u16string> names;
    const OpenKey key(m_registry, root, path);
    char16_t name[256];
    for (std::uint32_t i = 0; key.Get() != 0; ++i) {
        std::uint32_t length = static_cast<std::uint32_t>(std::size(name));
        if (m_registry.EnumKey(key.Get(), i, name, length) != kErrorSuccess) break;
        names.emplace_back(name, length);
    }
    return names;
}

InstallerBooks::Text InstallerBooks::ValueText(KeyHandle root, const std::u16string& path, const char16_t* name) {
    const OpenKey key(m_registry, root, path);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    if (key.Get() == 0 || m_registry.QueryValue(key.Get(), name, type, nullptr, size) != kErrorSuccess) return {};
    std::vector<std::byte> data(size);
    if (m_registry.QueryValue(key.Get(), name, type, data.data(), size) != kErrorSuccess) return {};
    if (type == kRegDword && size == sizeof(std::uint32_t)) {
        std::uint32_t number = 0;
        std::memcpy(&number, data.data(), sizeof number);
        const std::string digits = std::to_string(number);
        return std::u16string(digits.begin(), digits.end());
    }
    std::u16string text(size / sizeof(char16_t), u'\0');
    if (type != kRegSz && type != kRegExpandSz && type != kRegMultiSz) text.clear();
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
    text.resize(std::min(text.find(u'\0'), text.size()));
    return text;
}

bool InstallerBooks::HasKey(KeyHandle root, const std::u16string& path) {
    return OpenKey(m_registry, root, path).Get() != 0;
}

InstallerBooks::Text InstallerBooks::ValueOfUsers(const std::u16string& path, const char16_t* name) {
    const std::u16string users(kUsers);
    for (const std::u16string& user : SubKeys(kHkeyLocalMachine, users)) {
        std::u16string key = users;
        key.append(u"\\").append(user).append(u"\\").append(path);
        if (Text text = ValueText(kHkeyLocalMachine, key, name)) return text;
    }
    return {};
}

std::vector<std::u16string> InstallerBooks::ReadComponents() {
    std::vector<std::u16string> components;
    const std::u16string users(kUsers);
    for (const std::u16string& user : SubKeys(kHkeyLocalMachine, users)) {
        std::u16string books = users;
        books.append(u"\\").append(user).append(u"\\Components");
        for (const std::u16string& key : SubKeys(kHkeyLocalMachine, books)) {
            const Guid guid = ParseGuid(key, GuidForm::Packed);
            if (!guid.IsNil()) components.emplace_back(GuidText(guid, GuidForm::Braced).View());
        }
    }
    return components;
}

// The list is read at the start of an enumeration, so that it costs one walk of the books and not one for each index.
Win32Error InstallerBooks::EnumComponent(std::uint32_t index, char16_t (&component)[39]) {
    const std::lock_guard guard(m_lock);
    if (index == 0) m_components = ReadComponents();
    if (index >= m_components.size()) return kErrorNoMoreItems;
    std::uint32_t length = static_cast<std::uint32_t>(std::size(component));
    return AnswerInstallerText(m_components[index], component, length);
}

std::int32_t InstallerBooks::GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                              std::uint32_t& length) {
    const std::u16string packedProduct = Packed(product);
    const std::u16string packedComponent = Packed(component);
    if (packedProduct.empty() || packedComponent.empty()) return kInstallStateUnknown;
    Text path = ValueOfUsers(u"Components\\" + packedComponent, packedProduct.c_str());
    if (!path) return kInstallStateUnknown;
    // The service writes "C?\..." for a file that others share with it.
    if (path->size() > 1 && (*path)[1] == u'?') (*path)[1] = u':';
    const bool registryPath = !path->empty() && path->front() >= u'0' && path->front() <= u'9';
    const bool present = registryPath || m_files.GetAttributes(path->c_str()) != kInvalidAttributes;
    if (AnswerInstallerText(*path, buffer, length) != kErrorSuccess) return kInstallStateMoreData;
    return present ? kInstallStateLocal : kInstallStateAbsent;
}

Win32Error InstallerBooks::GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                                          std::uint32_t& length) {
    const std::u16string code = Packed(product);
    if (code.empty() || property == nullptr) return kErrorInvalidParameter;
    const std::u16string userKey = std::u16string(kUserProducts) + code;
    const std::u16string machineKey = std::u16string(kMachineProducts) + code;
    const bool forUser = HasKey(kHkeyCurrentUser, userKey);
    if (!forUser && !HasKey(kHkeyLocalMachine, machineKey)) return kErrorUnknownProduct;
    Text text;
    if (const Property* published = FindProperty(kPublished, property)) {
        const std::u16string key = (forUser ? userKey : machineKey) + std::u16string(published->subKey);
        text = ValueText(forUser ? kHkeyCurrentUser : kHkeyLocalMachine, key, published->value);
        if (text && published->name == u"PackageCode") {
            const Guid package = ParseGuid(*text, GuidForm::Packed);
            text = package.IsNil() ? std::u16string() : std::u16string(GuidText(package, GuidForm::Braced).View());
        }
    } else if (const Property* installed = FindProperty(kInstalled, property)) {
        text = ValueOfUsers(u"Products\\" + code + u"\\InstallProperties", installed->value);
    } else {
        return kErrorUnknownProperty;
    }
    // A property that was not written is there and empty.
    return AnswerInstallerText(text.value_or(u""), buffer, length);
}

}  // namespace roundup
