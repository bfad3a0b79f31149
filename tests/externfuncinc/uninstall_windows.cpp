// Uninstalls on the live machine, through the module as a host loads it.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "tests/externfuncinc/doneobserver.h"

namespace roundup {
namespace {

using GetImpFunction = IRoundupProc* (*)();

std::u16string Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }
const wchar_t* Native(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

std::u16string EntryKey(char name) {
    return u"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\RoundupCheck" + std::u16string(1, name);
}

// An uninstaller, run by the test below in a process of its own: it ends when the other one runs too.
void Remove(char name, char other, UINT code) {
    if (std::getenv("ROUNDUP_TEST_UNINSTALLS") == nullptr) GTEST_SKIP() << "run by another test";
    const std::u16string start = u"Local\\RoundupCheck";
    const HANDLE here = CreateEventW(nullptr, TRUE, FALSE, Native(start + std::u16string(1, name)));
    const HANDLE there = CreateEventW(nullptr, TRUE, FALSE, Native(start + std::u16string(1, other)));
    SetEvent(here);
    const bool overlapped = WaitForSingleObject(there, 60'000) == WAIT_OBJECT_0;
    RegDeleteKeyW(HKEY_CURRENT_USER, Native(EntryKey(name)));
    ExitProcess(overlapped ? code : 1);
}
TEST(UninstallerOfTheTest, DISABLED_A) { Remove('A', 'B', 7); }
TEST(UninstallerOfTheTest, DISABLED_B) { Remove('B', 'A', 3010); }

void SetText(HKEY key, const wchar_t* name, const std::u16string& text) {
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(char16_t));
    ASSERT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size), 0);
}

void MakeEntry(char name) {
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::u16string path(reinterpret_cast<const char16_t*>(program));
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, Native(EntryKey(name)), &key), 0);
    SetText(key, L"DisplayName", u"Roundup check " + std::u16string(1, name));
    SetText(key, L"InstallLocation", u"C:\\RoundupCheck" + std::u16string(1, name));
    SetText(key, L"UninstallString",
            u"\"" + path + u"\" --gtest_also_run_disabled_tests --gtest_filter=UninstallerOfTheTest.DISABLED_" +
                std::u16string(1, name));
    RegCloseKey(key);
}

class ModuleUninstallTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const HMODULE module = LoadLibraryW(Native(Wide(ROUNDUP_MODULE)));
        ASSERT_NE(module, nullptr) << GetLastError();
        const auto entry = reinterpret_cast<GetImpFunction>(reinterpret_cast<void*>(GetProcAddress(module, "GetImp")));
        ASSERT_NE(entry, nullptr);
        m_facade = entry();
        ASSERT_NE(m_facade, nullptr);
        m_facade->Init();
        m_facade->SetObserver(&m_observer);
    }
    void TearDown() override {
        if (m_facade == nullptr) return;
        m_facade->Uninit();
        m_facade->Release();
    }
    // The record of a key that is still there; null when it is gone.
    IRmxApp* Find(const std::u16string& key) {
        m_observer.records.clear();
        m_facade->EnumApps();
        for (IRmxApp* const record : m_observer.records) {
            if (record->GetAppInfo()->wzKeyString == key) return record;
        }
        return nullptr;
    }
    // Starts them all before the first has ended, waits for all ends, and checks that they are gone.
    void RemoveAtOnce(const std::vector<std::pair<std::u16string, std::uint32_t>>& apps) {
        ASSERT_EQ(m_facade->LoadApps(0), 0);
        std::vector<IRmxApp*> records;
        for (const auto& [key, code] : apps) {
            records.push_back(Find(key));
            ASSERT_NE(records.back(), nullptr) << "it is no application of the list";
        }
        for (IRmxApp* const record : records) ASSERT_EQ(m_facade->UnInstallApp(record), 0);
        EXPECT_EQ(m_facade->LoadApps(0), 0) << "a load in between must not take the records away";
        for (const auto& done : m_observer.WaitFor(apps.size())) {
            for (std::size_t i = 0; i < apps.size(); ++i) {
                if (done.record == records[i]) {
                    EXPECT_EQ(done.code, apps[i].second);
                }
            }
        }
        for (const auto& [key, code] : apps) EXPECT_EQ(Find(key), nullptr);
    }

    DoneObserver m_observer;
    IRoundupProc* m_facade = nullptr;
};

TEST_F(ModuleUninstallTest, TwoRemovals_OverlapBringTheirCodesAndAreGoneFromTheList) {
    SetEnvironmentVariableW(L"ROUNDUP_TEST_UNINSTALLS", L"1");
    MakeEntry('A');
    MakeEntry('B');
    RemoveAtOnce({{u"RoundupCheckA", 7}, {u"RoundupCheckB", 3010}});
    SetEnvironmentVariableW(L"ROUNDUP_TEST_UNINSTALLS", nullptr);
}

// tools/check-uninstall installs real programs and names them here as "key=exit code;key=exit code".
TEST_F(ModuleUninstallTest, RealPrograms_AreRemovedAtOnce) {
    const char* const named = std::getenv("ROUNDUP_UNINSTALL");
    if (named == nullptr) GTEST_SKIP() << "no programs to remove";
    std::vector<std::pair<std::u16string, std::uint32_t>> apps;
    for (std::string rest = named; !rest.empty();) {
        const std::string app = rest.substr(0, rest.find(';'));
        rest.erase(0, app.size() + 1);
        const std::size_t mark = app.find('=');
        apps.emplace_back(Wide(app.substr(0, mark)), std::stoul(app.substr(mark + 1)));
    }
    RemoveAtOnce(apps);
}

}  // namespace
}  // namespace roundup
