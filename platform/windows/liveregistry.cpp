#include <algorithm>
#include <string_view>

#include "platform/windows/keyorder.h"
#include "platform/windows/liveareas.h"
#include "platform/windows/wintext.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

Win32Error CodeOf(LSTATUS status) { return static_cast<Win32Error>(status); }

// Handles of keys are 32 bits wide and the roots' are negative: the seam has them with their sign in 64.
HKEY KeyOf(KeyHandle key) { return reinterpret_cast<HKEY>(static_cast<std::intptr_t>(key)); }
KeyHandle HandleOf(HKEY key) { return static_cast<KeyHandle>(reinterpret_cast<std::intptr_t>(key)); }
bool IsRoot(KeyHandle key) { return key >= kHkeyClassesRoot; }

// Takes a start and the backslash behind it off the path.
bool TakeStart(std::u16string_view& path, std::u16string_view start) {
    if (!StartsWithNoCase(path, start)) return false;
    path.remove_prefix(start.size());
    return true;
}

// True for a class that both views of Windows share: all but those below five keys.
bool IsSharedClass(KeyHandle root, std::u16string_view path) {
    constexpr std::u16string_view kOfEachView[] = {u"Wow6432Node", u"CLSID",      u"DirectShow",
                                                   u"Interface",   u"Media Type", u"MediaFoundation"};
    const bool machineOrUser = root == kHkeyLocalMachine || root == kHkeyCurrentUser;
    if (root != kHkeyClassesRoot && !(machineOrUser && TakeStart(path, u"Software\\Classes\\"))) return false;
    const std::u16string_view first = path.substr(0, path.find(u'\\'));
    return std::ranges::none_of(kOfEachView, [&](auto name) { return EqualsNoCase(name, first); });
}

class LiveRegistry final : public IRegistry {
  public:
    Win32Error OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        HKEY opened = nullptr;
        LSTATUS status = ::RegOpenKeyExW(KeyOf(parent), ToWide(subKey), 0, access, &opened);
        if (m_isWine && status == ERROR_FILE_NOT_FOUND && (access & kKeyWow64Key32) != 0 && subKey != nullptr &&
            IsSharedClass(parent, subKey)) {
            status = ::RegOpenKeyExW(KeyOf(parent), ToWide(subKey), 0, access ^ (KEY_WOW64_32KEY | KEY_WOW64_64KEY),
                                     &opened);
        }
        key = status == ERROR_SUCCESS ? HandleOf(opened) : 0;
        return CodeOf(status);
    }

    Win32Error CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        // The platform knows no creation of a key without a name, and wants a text.
        const wchar_t* const name = subKey != nullptr ? ToWide(subKey) : L"";
        HKEY made = nullptr;
        const LSTATUS status = ::RegCreateKeyExW(KeyOf(parent), name, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                                 nullptr, &made, nullptr);
        key = status == ERROR_SUCCESS ? HandleOf(made) : 0;
        return CodeOf(status);
    }

    // The platform would close what it keeps open of a root for the whole process.
    void CloseKey(KeyHandle key) override {
        if (key == 0 || IsRoot(key)) return;
        m_order.Forget(KeyOf(key));
        ::RegCloseKey(KeyOf(key));
    }

    Win32Error QueryInfo(KeyHandle key, KeyInfo& info) override {
        DWORD subKeys = 0, longestSubKey = 0, values = 0, longestName = 0, longestData = 0;
        const LSTATUS status = ::RegQueryInfoKeyW(KeyOf(key), nullptr, nullptr, nullptr, &subKeys, &longestSubKey,
                                                  nullptr, &values, &longestName, &longestData, nullptr, nullptr);
        if (status == ERROR_SUCCESS) info = {subKeys, longestSubKey, values, longestName, longestData};
        return CodeOf(status);
    }

    Win32Error EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) override {
        return m_order.EnumKey(KeyOf(key), index, name, length);
    }

    Win32Error EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length, std::uint32_t& type,
                         void* data, std::uint32_t& size) override {
        DWORD characters = length, kind = 0, bytes = size;
        const LSTATUS status = ::RegEnumValueW(KeyOf(key), index, ToWide(name), &characters, nullptr, &kind,
                                               static_cast<BYTE*>(data), &bytes);
        length = characters;
        type = kind;
        size = bytes;
        return CodeOf(status);
    }

    Win32Error QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                          std::uint32_t& size) override {
        DWORD kind = 0, bytes = size;
        const LSTATUS status =
            ::RegQueryValueExW(KeyOf(key), ToWide(name), nullptr, &kind, static_cast<BYTE*>(data), &bytes);
        type = kind;
        size = bytes;
        return CodeOf(status);
    }

    Win32Error SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                        std::uint32_t size) override {
        return CodeOf(::RegSetValueExW(KeyOf(key), ToWide(name), 0, type, static_cast<const BYTE*>(data), size));
    }

    Win32Error DeleteValue(KeyHandle key, const char16_t* name) override {
        return CodeOf(::RegDeleteValueW(KeyOf(key), ToWide(name)));
    }

  private:
    const bool m_isWine = IsWine();
    KeyOrder m_order;
};

}  // namespace

std::unique_ptr<IRegistry> MakeLiveRegistry() { return std::make_unique<LiveRegistry>(); }

}  // namespace roundup
