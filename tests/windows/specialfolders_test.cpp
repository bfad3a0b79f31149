// A machine whose special folders are not there.
#include <map>

#include "platform/livemachine.h"
#include "tests/windows/modulehost.h"

namespace roundup {
namespace {

// While it lives, the texts of a key name folders of a drive that does not exist.
class MissingFolders {
  public:
    MissingFolders(HKEY root, const wchar_t* path) {
        ::RegOpenKeyExW(root, path, 0, KEY_READ | KEY_WRITE, m_key.Out());
        wchar_t name[260];
        BYTE data[2048];
        DWORD length = 260, size = sizeof data, type = 0;
        for (DWORD i = 0; ::RegEnumValueW(m_key.Get(), i, name, &length, nullptr, &type, data, &size) == 0; ++i) {
            if (type == REG_SZ || type == REG_EXPAND_SZ) m_former[name] = {type, {data, data + size}};
            length = 260, size = sizeof data;
        }
        for (const auto& [value, former] : m_former) {
            const std::wstring gone = L"Q:\\gone\\" + value;
            Set(value, REG_SZ, gone.c_str(), (gone.size() + 1) * sizeof(wchar_t));
        }
    }
    ~MissingFolders() {
        for (const auto& [value, former] : m_former) Set(value, former.type, former.data.data(), former.data.size());
    }
    std::size_t Count() const { return m_former.size(); }

  private:
    struct KeyPolicy {
        using Type = HKEY;
        static Type None() noexcept { return nullptr; }
        static void Close(Type key) noexcept { ::RegCloseKey(key); }
    };
    struct Former {
        DWORD type = 0;
        std::vector<BYTE> data;
    };
    void Set(const std::wstring& name, DWORD type, const void* data, std::size_t size) {
        ::RegSetValueExW(m_key.Get(), name.c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    }

    WinHandle<KeyPolicy> m_key;
    std::map<std::wstring, Former> m_former;
};

TEST(SpecialFolders, EveryOneMissing_LoadGoesOnAndUserEntriesAreFound) {
    constexpr const wchar_t* kFolders = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
    const MissingFolders ofUser(HKEY_CURRENT_USER, kFolders);
    const MissingFolders ofMachine(HKEY_LOCAL_MACHINE, kFolders);
    ASSERT_GT(ofUser.Count() + ofMachine.Count(), 5U);
    const ScratchEntry entry(L"RoundupFolderTest");
    const std::vector<std::u16string> keys = LoadedModule().Load();
    EXPECT_NE(std::find(keys.begin(), keys.end(), u"RoundupFolderTest"), keys.end());
}

}  // namespace
}  // namespace roundup
