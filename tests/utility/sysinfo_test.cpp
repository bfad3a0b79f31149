#include "utility/sysinfo.h"

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class SysInfoTest : public MachineTest {};

TEST_F(SysInfoTest, MachineTellsItsKindAndWhereTheHostLies) {
    builder.Version(6, 1, 7601).Architecture(kArchitectureIntel);
    Machine& machine = Start();
    EXPECT_FALSE(Is64BitOS());
    OsVersionInfo version;
    version.servicePack[0] = u'#';
    ASSERT_TRUE(GetOsVersion(version));
    EXPECT_EQ(version.major, 6U);
    EXPECT_EQ(version.minor, 1U);
    EXPECT_EQ(version.build, 7601U);
    EXPECT_NE(version.servicePack[0], u'#');

    char16_t executable[520];
    ASSERT_NE(machine.System().GetHostExecutable(executable, 520), 0U);
    const std::u16string_view folder = GetExeFolder();
    EXPECT_NE(folder.back(), u'\\');
    EXPECT_EQ(std::u16string_view(executable).substr(0, folder.size() + 1), std::u16string(folder) + u"\\");
    FixedText<260> cache;
    ASSERT_TRUE(GetCacheFolder(cache));
    EXPECT_EQ(cache.View(), std::u16string(folder) + u"\\cache");
}

}  // namespace
}  // namespace roundup
