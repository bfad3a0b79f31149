#include "appcenter/msicrash/msicrash.h"

#include "tests/support/machinetest.h"
#include "utility/formattext.h"
#include "utility/ininumber.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr char16_t kPackage[] = u"C:\\Windows\\Installer\\1a.msi";

class CrashGuardTest : public MachineTest {
  protected:
    static std::uint32_t StoredIn(const char16_t* file) {
        FixedText<260> folder;
        EXPECT_TRUE(GetCacheFolder(folder));
        return ReadIniNumber(u"Crash", kPackage, 99, FormatText(u"%s\\%s", folder, file).c_str());
    }
    // What one attempt without a crash does: whether it was allowed, and the number on disk while it ran.
    static std::pair<bool, std::uint32_t> Attempt(std::uint32_t kind, const char16_t* file) {
        const PackageAttempt attempt(GetCrashGuard(kind), kPackage);
        return {attempt.IsAllowed(), StoredIn(file)};
    }
};

TEST_F(CrashGuardTest, Attempt_IsOnDiskWhileItRunsAndGoneBehindIt) {
    const struct {
        const char* stored;
        bool allowed;
        std::uint32_t during;
        std::uint32_t after;
    } cases[] = {
        {nullptr, true, 1, 0},
        {"1", true, 2, 1},
        {"2", false, 2, 2},
        {"x", true, 1, 0},
        {"4294967295", false, 0xFFFFFFFF, 0xFFFFFFFF},
    };
    for (const auto& c : cases) {
        builder = MachineBuilder();
        builder.HostFolder(u"cache");
        const std::string text = std::string("[Crash]\r\nC:\\Windows\\Installer\\1A.MSI=") +
                                 (c.stored != nullptr ? c.stored : "") + "\r\nC:\\other.msi=5\r\n";
        if (c.stored != nullptr) builder.HostFile(u"cache\\EnumRetry.ini", text);
        Start();
        EXPECT_EQ(Attempt(1, u"EnumRetry.ini"), std::make_pair(c.allowed, c.during)) << text;
        EXPECT_EQ(StoredIn(u"EnumRetry.ini"), c.after) << text;
        EXPECT_EQ(StoredIn(u"AnalyzeRetry.ini"), 99U) << "the kinds have files of their own";
    }
}

// Where nothing can be counted every package is read, each time.
TEST_F(CrashGuardTest, RetryFileThatCannotBeWritten_LeavesPackagesUnprotected) {
    Start();
    FixedText<260> folder;
    ASSERT_TRUE(GetCacheFolder(folder));
    const std::u16string file = FormatText(u"%s\\EnumRetry.ini", folder);
    const struct {
        const char* what;
        MachineBuilder machine;
        std::uint32_t stored;  // what an attempt finds and leaves
    } cases[] = {
        {"no cache folder", MachineBuilder(), 99},
        {"a folder in its place", MachineBuilder().HostFolder(u"cache\\EnumRetry.ini"), 99},
        {"denied", MachineBuilder().HostFile(u"cache\\EnumRetry.ini", "").DenyFile(file), 99},
        {"read-only",
         MachineBuilder()
             .HostFile(u"cache\\EnumRetry.ini", "[Crash]\r\nC:\\Windows\\Installer\\1a.msi=1\r\n")
             .ReadOnlyFile(file),
         1},
    };
    for (const auto& c : cases) {
        builder = c.machine;
        Start();
        for (int run = 0; run < 4; ++run) {
            EXPECT_EQ(Attempt(1, u"EnumRetry.ini"), std::make_pair(true, c.stored)) << c.what;
        }
        EXPECT_FALSE(GetCrashGuard(1).SetRetryCount(kPackage, 1)) << c.what;
    }
}

}  // namespace
}  // namespace roundup
