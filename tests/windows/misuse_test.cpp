// A careless host and Roundup.dll, which is unloaded behind it.
#include "tests/externfuncinc/flathost.h"
#include "tests/windows/modulehost.h"

namespace roundup {
namespace {

TEST(ModuleMisuse, CarelessHost_DoesNoHarmAndUnloads) {
    const ScratchEntry entry(L"RoundupMisuseTest");
    for (int round = 0; round < 2; ++round) {
        {
            const OwnedModule module(::LoadLibraryA(ROUNDUP_MODULE));
            ASSERT_TRUE(module);
            MisuseModule(GetProcedure<decltype(&GetImp)>(module.Get(), "GetImp"), u"RoundupMisuseTest");
        }
        EXPECT_EQ(::GetModuleHandleW(L"Roundup.dll"), nullptr) << "it stays";
    }
}

}  // namespace
}  // namespace roundup
