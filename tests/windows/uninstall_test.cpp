// Uninstalls on the live machine, through the module as a host loads it.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/externfuncinc/doneobserver.h"
#include "tests/windows/modulehost.h"

namespace roundup {
namespace {

std::wstring KeyName(char name) { return L"RoundupCheck" + std::wstring(1, static_cast<wchar_t>(name)); }

// An uninstaller, run by the test below in a process of its own: it ends when the other one runs too.
void Remove(char name, char other, UINT code) {
    if (std::getenv("ROUNDUP_TEST_UNINSTALLS") == nullptr) GTEST_SKIP() << "run by another test";
    const KernelHandle here(::CreateEventW(nullptr, TRUE, FALSE, (L"Local\\" + KeyName(name)).c_str()));
    const KernelHandle there(::CreateEventW(nullptr, TRUE, FALSE, (L"Local\\" + KeyName(other)).c_str()));
    ::SetEvent(here.Get());
    const bool overlapped = ::WaitForSingleObject(there.Get(), 60'000) == WAIT_OBJECT_0;
    ::RegDeleteKeyW(HKEY_CURRENT_USER, (std::wstring(kUserUninstall) + L"\\" + KeyName(name)).c_str());
    ::ExitProcess(overlapped ? code : 1);
}
TEST(UninstallerOfTheTest, DISABLED_A) { Remove('A', 'B', 7); }
TEST(UninstallerOfTheTest, DISABLED_B) { Remove('B', 'A', 3010); }

std::unique_ptr<ScratchEntry> MakeEntry(char name) {
    wchar_t program[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    auto entry = std::make_unique<ScratchEntry>(KeyName(name));
    entry->Text(L"UninstallString", L"\"" + std::wstring(program) +
                                        L"\" --gtest_also_run_disabled_tests "
                                        L"--gtest_filter=UninstallerOfTheTest.DISABLED_" +
                                        std::wstring(1, static_cast<wchar_t>(name)));
    return entry;
}

// The module stays in a process that it started another one from. The tests of this file load a copy, so that the
// module itself can be unloaded in others.
std::wstring CopyOfModule() {
    static const std::wstring path = [] {
        const char* const name = ROUNDUP_MODULE;
        wchar_t folder[MAX_PATH] = {};
        ::GetTempPathW(MAX_PATH, folder);
        const std::wstring copy = std::wstring(folder) + L"RoundupCopy" + std::to_wstring(sizeof(void*)) + L".dll";
        EXPECT_TRUE(::CopyFileW(std::wstring(name, name + std::strlen(name)).c_str(), copy.c_str(), FALSE));
        return copy;
    }();
    return path;
}

class ModuleUninstallTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto entry = GetProcedure<decltype(&GetImp)>(m_module.Get(), "GetImp");
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

    const OwnedModule m_module{::LoadLibraryW(CopyOfModule().c_str())};
    DoneObserver m_observer;
    IRoundupProc* m_facade = nullptr;
};

TEST_F(ModuleUninstallTest, TwoRemovals_OverlapBringTheirCodesAndAreGoneFromTheList) {
    ::SetEnvironmentVariableW(L"ROUNDUP_TEST_UNINSTALLS", L"1");
    const auto a = MakeEntry('A');
    const auto b = MakeEntry('B');
    RemoveAtOnce({{u"RoundupCheckA", 7}, {u"RoundupCheckB", 3010}});
    ::SetEnvironmentVariableW(L"ROUNDUP_TEST_UNINSTALLS", nullptr);
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
        const std::u16string key(app.begin(), app.begin() + static_cast<std::ptrdiff_t>(mark));
        apps.emplace_back(key, static_cast<std::uint32_t>(std::stoul(app.substr(mark + 1))));
    }
    RemoveAtOnce(apps);
}

}  // namespace
}  // namespace roundup
