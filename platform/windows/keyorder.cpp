#include "platform/windows/keyorder.h"

#include <algorithm>

#include "utility/casemap.h"

namespace roundup {

namespace {

bool IsLessUpper(const std::u16string& a, const std::u16string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char16_t x, char16_t y) { return ToUpper(x) < ToUpper(y); });
}

}  // namespace

KeyOrder::KeyOrder() : m_sorts(IsWine()) {}

Win32Error KeyOrder::Ask(HKEY key, std::uint32_t index, char16_t* name, std::uint32_t& length) {
    DWORD characters = length;
    const LSTATUS status = ::RegEnumKeyExW(key, index, ToWide(name), &characters, nullptr, nullptr, nullptr, nullptr);
    length = characters;
    return static_cast<Win32Error>(status);
}

Win32Error KeyOrder::ReadNames(HKEY key, Names& names) {
    char16_t name[256];  // the platform's limit for the name of a key, with the terminator
    for (std::uint32_t index = 0;; ++index) {
        std::uint32_t length = 256;
        const Win32Error error = Ask(key, index, name, length);
        if (error == kErrorNoMoreItems) break;
        if (error != kErrorSuccess) return error;
        names.emplace_back(name, length);
    }
    std::sort(names.begin(), names.end(), IsLessUpper);
    return kErrorSuccess;
}

Win32Error KeyOrder::EnumKey(HKEY key, std::uint32_t index, char16_t* name, std::uint32_t& length) {
    if (!m_sorts) return Ask(key, index, name, length);
    if (index == 0) {
        Names names;
        if (const Win32Error error = ReadNames(key, names); error != kErrorSuccess) return error;
        const std::lock_guard guard(m_lock);
        m_walks[key] = std::move(names);
    }
    const std::lock_guard guard(m_lock);
    const auto walk = m_walks.find(key);
    if (walk == m_walks.end()) return Ask(key, index, name, length);
    if (index >= walk->second.size()) return kErrorNoMoreItems;
    const std::u16string& found = walk->second[index];
    if (found.size() + 1 > length) return kErrorMoreData;
    std::char_traits<char16_t>::copy(name, found.c_str(), found.size() + 1);
    length = static_cast<std::uint32_t>(found.size());
    return kErrorSuccess;
}

void KeyOrder::Forget(HKEY key) {
    if (!m_sorts) return;
    const std::lock_guard guard(m_lock);
    m_walks.erase(key);
}

}  // namespace roundup
