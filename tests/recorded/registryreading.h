// Short forms of what the tests of registries ask.
#pragma once

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace roundup {

class OpenedKey {
  public:
    OpenedKey(IRegistry& registry, KeyHandle parent, const char16_t* path, std::uint32_t access = kKeyRead)
        : m_registry(registry), m_error(registry.OpenKey(parent, path, access, m_key)) {}
    ~OpenedKey() { m_registry.CloseKey(m_key); }
    OpenedKey(const OpenedKey&) = delete;
    OpenedKey& operator=(const OpenedKey&) = delete;

    Win32Error Error() const { return m_error; }
    KeyHandle Get() const { return m_key; }

    std::vector<std::u16string> Subkeys() const {
        std::vector<std::u16string> names;
        std::vector<char16_t> name(20000);
        for (std::uint32_t i = 0;; ++i) {
            auto length = static_cast<std::uint32_t>(name.size());
            if (m_registry.EnumKey(m_key, i, name.data(), length) != kErrorSuccess) return names;
            names.emplace_back(name.data(), length);
        }
    }

    std::vector<std::u16string> ValueNames() const {
        std::vector<std::u16string> names;
        std::vector<char16_t> name(20000);
        for (std::uint32_t i = 0;; ++i) {
            auto length = static_cast<std::uint32_t>(name.size());
            std::uint32_t type = 0;
            std::uint32_t size = 0;
            if (m_registry.EnumValue(m_key, i, name.data(), length, type, nullptr, size) != kErrorSuccess) return names;
            names.emplace_back(name.data(), length);
        }
    }

    // Type and bytes of a value; type 0xFFFFFFFF when there is none.
    std::pair<std::uint32_t, std::string> Value(const char16_t* name) const {
        std::uint32_t type = 0;
        std::uint32_t size = 0;
        if (m_registry.QueryValue(m_key, name, type, nullptr, size) != kErrorSuccess) return {0xFFFFFFFFU, {}};
        std::string bytes(size, '\0');
        const Win32Error error = m_registry.QueryValue(m_key, name, type, bytes.data(), size);
        bytes.resize(size);  // the value may have changed in between
        return error == kErrorSuccess ? std::pair{type, bytes} : std::pair{0xFFFFFFFFU, std::string()};
    }

    // A value's bytes as text without its terminator; u"-" when there is none.
    std::u16string Text(const char16_t* name) const {
        const auto [type, bytes] = Value(name);
        if (type == 0xFFFFFFFFU) return u"-";
        std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
        if (!text.empty() && text.back() == u'\0') text.pop_back();
        return text;
    }

  private:
    IRegistry& m_registry;
    KeyHandle m_key = 0;
    Win32Error m_error;
};

using Names = std::vector<std::u16string>;

// Shows what differs when a comparison of texts fails.
inline std::string Shown(std::u16string_view text) {
    std::string shown;
    for (const char16_t c : text) shown += c < 0x80 ? static_cast<char>(c) : '?';
    return shown;
}

}  // namespace roundup
