#include "appcenter/enumappx/repositorykey.h"

#include <algorithm>

#include "platform/machine.h"

namespace roundup {

RepositoryKey::RepositoryKey(const std::u16string& path) : m_registry(CurrentMachine().Registry()) {
    if (m_registry.OpenKey(kHkeyCurrentUser, path.c_str(), kKeyRead, m_key) != kErrorSuccess) m_key = 0;
}

RepositoryKey::~RepositoryKey() {
    if (m_key != 0) m_registry.CloseKey(m_key);
}

bool RepositoryKey::Measure() {
    if (m_key == 0) return false;
    if (!m_measured) m_measured = m_registry.QueryInfo(m_key, m_info) == kErrorSuccess;
    return m_measured;
}

bool RepositoryKey::ListSubKeys(std::vector<std::u16string>& names) {
    if (!Measure()) return false;
    std::u16string name(std::size_t{m_info.longestSubKey} + 1, u'\0');
    names.reserve(names.size() + std::min<std::size_t>(m_info.subKeys, 0x10000));
    for (std::uint32_t index = 0;; ++index) {
        auto length = static_cast<std::uint32_t>(name.size());
        const Win32Error error = m_registry.EnumKey(m_key, index, name.data(), length);
        if (error == kErrorNoMoreItems) return true;
        if (error != kErrorSuccess) return false;
        names.emplace_back(name.data(), length);
    }
}

std::u16string RepositoryKey::Text(const char16_t* name) {
    if (!Measure()) return {};
    m_buffer.resize(std::size_t{m_info.longestValueData} / sizeof(char16_t) + 1);
    auto size = static_cast<std::uint32_t>(m_buffer.size() * sizeof(char16_t));
    std::uint32_t type = kRegNone;
    if (m_registry.QueryValue(m_key, name, type, m_buffer.data(), size) != kErrorSuccess) return {};
    if (type != kRegSz && type != kRegExpandSz) return {};
    const std::u16string_view text(m_buffer.data(), std::min<std::size_t>(size / sizeof(char16_t), m_buffer.size()));
    return std::u16string(text.substr(0, text.find(u'\0')));
}

std::uint64_t RepositoryKey::Number(const char16_t* name) {
    std::uint64_t number = 0;
    std::uint32_t size = sizeof number;
    std::uint32_t type = kRegNone;
    if (m_key == 0 || m_registry.QueryValue(m_key, name, type, &number, size) != kErrorSuccess) return 0;
    return number;
}

}  // namespace roundup
