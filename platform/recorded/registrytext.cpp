#include "platform/recorded/registrytext.h"

#include <cstring>

namespace roundup {

namespace {

// Names of values have at most 16,383 characters, those of keys 255.
constexpr std::uint32_t kLongestValueName = 16384;
constexpr std::uint32_t kLongestKeyName = 256;

class OpenedKey {
  public:
    OpenedKey(IRegistry& registry, KeyHandle root, const char16_t* path) : m_registry(registry) {
        if (registry.OpenKey(root, path, kKeyRead | kKeyWow64Key64, m_key) != kErrorSuccess) m_key = 0;
    }
    ~OpenedKey() {
        if (m_key != 0) m_registry.CloseKey(m_key);
    }
    OpenedKey(const OpenedKey&) = delete;
    OpenedKey& operator=(const OpenedKey&) = delete;
    KeyHandle Get() const noexcept { return m_key; }

  private:
    IRegistry& m_registry;
    KeyHandle m_key = 0;
};

std::u16string TextOf(const std::vector<std::byte>& data) {
    std::u16string text(data.size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
    const std::size_t zero = text.find(u'\0');
    if (zero != std::u16string::npos) text.resize(zero);
    return text;
}

bool ReadValue(IRegistry& registry, KeyHandle key, const char16_t* name, std::uint32_t& type,
               std::vector<std::byte>& data) {
    std::uint32_t size = 0;
    if (registry.QueryValue(key, name, type, nullptr, size) != kErrorSuccess) return false;
    data.resize(size);
    if (size != 0 && registry.QueryValue(key, name, type, data.data(), size) != kErrorSuccess) return false;
    data.resize(size);
    return true;
}

bool IsText(std::uint32_t type) noexcept { return type == kRegSz || type == kRegExpandSz; }

}  // namespace

std::optional<std::u16string> ReadRegistryText(IRegistry& registry, KeyHandle root, const char16_t* key,
                                               const char16_t* name, std::uint32_t* type) {
    const OpenedKey opened(registry, root, key);
    std::uint32_t found = kRegNone;
    std::vector<std::byte> data;
    if (opened.Get() == 0 || !ReadValue(registry, opened.Get(), name, found, data) || !IsText(found)) return {};
    if (type != nullptr) *type = found;
    return TextOf(data);
}

bool ReadRegistryBytes(IRegistry& registry, KeyHandle root, const char16_t* key, const char16_t* name,
                       std::uint32_t& type, std::vector<std::byte>& data) {
    const OpenedKey opened(registry, root, key);
    return opened.Get() != 0 && ReadValue(registry, opened.Get(), name, type, data);
}

std::optional<std::uint32_t> ReadRegistryNumber(IRegistry& registry, KeyHandle root, const char16_t* key,
                                                const char16_t* name) {
    const OpenedKey opened(registry, root, key);
    std::uint32_t type = kRegNone;
    std::uint32_t number = 0;
    std::uint32_t size = sizeof number;
    if (opened.Get() == 0 || registry.QueryValue(opened.Get(), name, type, &number, size) != kErrorSuccess) return {};
    return type == kRegDword && size == sizeof number ? std::optional(number) : std::nullopt;
}

std::vector<RegistryTextValue> ReadRegistryTexts(IRegistry& registry, KeyHandle root, const char16_t* key) {
    std::vector<RegistryTextValue> values;
    const OpenedKey opened(registry, root, key);
    if (opened.Get() == 0) return values;
    std::vector<char16_t> name(kLongestValueName);
    for (std::uint32_t index = 0;; ++index) {
        std::uint32_t length = kLongestValueName;
        std::uint32_t type = kRegNone;
        std::uint32_t size = 0;
        const Win32Error error = registry.EnumValue(opened.Get(), index, name.data(), length, type, nullptr, size);
        if (error != kErrorSuccess) return values;
        std::vector<std::byte> data;
        if (!IsText(type) || !ReadValue(registry, opened.Get(), name.data(), type, data)) continue;
        values.push_back({std::u16string(name.data(), length), TextOf(data), type});
    }
}

std::vector<std::u16string> ReadSubKeyNames(IRegistry& registry, KeyHandle root, const char16_t* key) {
    std::vector<std::u16string> names;
    const OpenedKey opened(registry, root, key);
    if (opened.Get() == 0) return names;
    char16_t name[kLongestKeyName];
    for (std::uint32_t index = 0;; ++index) {
        std::uint32_t length = kLongestKeyName;
        if (registry.EnumKey(opened.Get(), index, name, length) != kErrorSuccess) return names;
        names.emplace_back(name, length);
    }
}

}  // namespace roundup
