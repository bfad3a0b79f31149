// The shared library as a host meets it: loaded, asked for its one export, told its machine by the environment.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "externfuncinc/roundup.h"
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

TEST_F(ModuleTest, GetImp_NeedsAMachine) {
    ASSERT_NE(Entry(), nullptr);
    EXPECT_EQ(Entry()(), nullptr) << "no machine is named";
    const std::string missing = m_scratch / "missing";
    setenv("ROUNDUP_MACHINE", missing.c_str(), 1);
    EXPECT_EQ(Entry()(), nullptr) << "a folder that is not there";
}

}  // namespace
}  // namespace roundup
