// Roundup.dll as a host uses it, and keys of the user that a test puts there for it to find.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "externfuncinc/roundup.h"
#include "platform/windows/winhandle.h"

// Builds on windows.h, which comes with the headers above.
#include <tlhelp32.h>

namespace roundup {

inline constexpr const wchar_t* kUserUninstall = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

class CountingHost final : public IRoundupObserver {
  public:
    std::vector<std::u16string> keys;
    std::uint32_t lastPercent = 0;

    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }
    void OnAppInfo(IRmxApp* app) override { keys.emplace_back(app->GetAppInfo()->wzKeyString); }
    std::uint8_t OnProgress(std::uint32_t percent) override {
        lastPercent = percent;
        return 1;
    }
    void OnUnInstallDone(IRmxApp*, std::uint32_t) override {}
};

class LoadedModule {
  public:
    LoadedModule() : m_module(::LoadLibraryA(ROUNDUP_MODULE)) {
        m_getImp = GetProcedure<decltype(&GetImp)>(m_module.Get(), "GetImp");
        EXPECT_NE(m_getImp, nullptr);
    }
    // The keys of one load, in order.
    std::vector<std::u16string> Load() const {
        CountingHost host;
        IRoundupProc* const roundup = m_getImp();
        EXPECT_NE(roundup, nullptr);
        if (roundup == nullptr) return {};
        roundup->Init();
        roundup->SetObserver(&host);
        EXPECT_EQ(roundup->LoadApps(0), 0);
        EXPECT_EQ(host.lastPercent, 100U);
        roundup->EnumApps();
        roundup->Uninit();
        roundup->Release();
        return host.keys;
    }

  private:
    const OwnedModule m_module;
    decltype(&GetImp) m_getImp = nullptr;
};

// A key below HKEY_CURRENT_USER that a test makes; it goes with all below it.
class ScratchKey {
  public:
    explicit ScratchKey(std::wstring path) : m_path(std::move(path)) {
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_key,
                                    nullptr),
                  ERROR_SUCCESS);
    }
    ~ScratchKey() {
        ::RegCloseKey(m_key);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    }
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    HKEY Get() const { return m_key; }
    void Text(const wchar_t* name, const std::wstring& value) const {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(::RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), size), 0);
    }

  private:
    const std::wstring m_path;
    HKEY m_key = nullptr;
};

// An entry of the user's Uninstall key.
class ScratchEntry : public ScratchKey {
  public:
    // A folder that is there.
    static std::wstring Place() {
        wchar_t folder[MAX_PATH] = {};
        ::GetTempPathW(MAX_PATH, folder);
        const std::wstring place = std::wstring(folder) + L"roundup-place";
        ::CreateDirectoryW(place.c_str(), nullptr);
        return place;
    }
    explicit ScratchEntry(const std::wstring& key) : ScratchKey(std::wstring(kUserUninstall) + L"\\" + key) {
        Text(L"DisplayName", L"Entry " + key);
        Text(L"DisplayVersion", L"1.0");
        Text(L"Publisher", L"Otter Works");
        Text(L"UninstallString", L"C:\\otter\\" + key + L".exe");
        // An entry without a place or a program that is there is no application.
        Text(L"InstallLocation", Place());
    }
};

}  // namespace roundup
