// The shared library as a host meets it: loaded, asked for its one export, told its machine by the environment.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "tests/externfuncinc/scripted.h"
#include "tests/support/machinebuilder.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

using GetImpFunction = IRoundupProc* (*)();

class ModuleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        m_module = dlopen(ROUNDUP_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(m_module, nullptr) << dlerror();
        // From here on the module's log goes where nobody minds it.
        setenv("TMPDIR", m_scratch.Text().c_str(), 1);
        for (const char* variable : {"ROUNDUP_MACHINE", "ROUNDUP_HOST", "ROUNDUP_USER"}) unsetenv(variable);
    }
    void TearDown() override {
        unsetenv("ROUNDUP_MACHINE");
        setenv("TMPDIR", m_temp.empty() ? "/tmp" : m_temp.c_str(), 1);
    }
    GetImpFunction Entry() const { return reinterpret_cast<GetImpFunction>(dlsym(m_module, "GetImp")); }

    const std::string m_temp = getenv("TMPDIR") != nullptr ? getenv("TMPDIR") : "";
    TempFolder m_scratch;
    void* m_module = nullptr;
};

TEST_F(ModuleTest, Exports_AreGetImpAlone) {
    const std::string command = std::string(ROUNDUP_SOURCE_DIR "/tools/check-exports ") + ROUNDUP_MODULE;
    EXPECT_EQ(std::system(command.c_str()), 0);
}

// The whole way of a host. The module is never unloaded, so the machine that it opens here stays its machine.
TEST_F(ModuleTest, GetImp_NeedsAMachineAndThenWorks) {
    ASSERT_NE(Entry(), nullptr);
    EXPECT_EQ(Entry()(), nullptr) << "no machine is named";
    const std::string missing = m_scratch / "missing";
    setenv("ROUNDUP_MACHINE", missing.c_str(), 1);
    EXPECT_EQ(Entry()(), nullptr) << "a folder that is not there";

    MachineBuilder builder;
    const std::u16string entry = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tool";
    builder.Text(entry, u"DisplayName", u"Tool")
        .Text(entry, u"DisplayVersion", u"1.0")
        .Text(entry, u"LocalPackage", u"C:\\Windows\\Installer\\1.msi")
        .Dword(entry, u"EstimatedSize", 2);
    const std::string folder = m_scratch / "machine";
    builder.WriteTo(folder);
    setenv("ROUNDUP_MACHINE", folder.c_str(), 1);
    IRoundupProc* const facade = Entry()();
    ASSERT_NE(facade, nullptr);
    IRoundupProc* const other = Entry()();
    EXPECT_NE(other, facade);
    EXPECT_EQ(other->Release(), 0U);

    ScriptedObserver observer;
    facade->Init();
    facade->SetObserver(&observer);
    EXPECT_EQ(facade->LoadApps(0), 0);
    EXPECT_EQ(observer.Take().back(), "100");
    facade->EnumApps();
    ASSERT_EQ(observer.told, std::vector<std::string>{"Tool"});
    EXPECT_EQ(observer.records[0]->GetAppInfo()->qwSize, 2048U);
    facade->Uninit();
    EXPECT_EQ(observer.references, 1);
    EXPECT_EQ(facade->Release(), 0U);
}

}  // namespace
}  // namespace roundup
