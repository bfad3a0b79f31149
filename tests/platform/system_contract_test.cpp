#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

class SystemContract : public ContractTest {
  protected:
    void SetUp() override {
        builder.Version(6, 1, 7601)
            .Processors(3)
            .Environment(u"Tool", u"C:\\Tool")
            .Environment(u"TEMP", u"C:\\elsewhere");
    }
};

// What asks for nothing that a test would have to put there.
class ProcessContract : public ContractTest {};

TEST_P(SystemContract, Version_FillsRecordsOfBothSizes) {
    ISystem& system = StartKind().System();
    for (const std::uint32_t size : {284U, 276U, 100U}) {
        OsVersionInfo version;
        std::memset(static_cast<void*>(&version), 0xAB, sizeof version);
        version.size = size;
        EXPECT_EQ(system.GetVersion(version), size != 100);
        if (size == 100) continue;
        EXPECT_EQ(version.major * 100 + version.minor, 601U);
        EXPECT_EQ(version.build, 7601U);
        EXPECT_EQ(version.servicePack[0], u'\0');
        EXPECT_EQ(version.productType, size == 284 ? 1 : 0xAB);
    }
    EXPECT_EQ(system.GetNativeArchitecture(), kArchitectureAmd64);
    EXPECT_EQ(system.GetProcessorCount(), 3U);
}

TEST_P(SystemContract, Environment_ExpandsWhatIsSet) {
    struct Case {
        const char16_t* text;
        const char16_t* expanded;
    };
    const Case cases[] = {
        {u"%tool%\\x", u"C:\\Tool\\x"},
        {u"%TEMP%", u"C:\\Users\\User\\AppData\\Local\\Temp"},
        {u"%absent%%Tool%", u"%absent%C:\\Tool"},
        {u"100% %Tool%", u"100% C:\\Tool"},
        {u"%ProgramFiles(x86)%;%ProgramW6432%;%CommonProgramFiles%",
         u"C:\\Program Files (x86);C:\\Program Files;C:\\Program Files\\Common Files"},
        {u"%SystemRoot%;%windir%;%SystemDrive%;%PUBLIC%;%ALLUSERSPROFILE%",
         u"C:\\Windows;C:\\Windows;C:;C:\\Users\\Public;C:\\ProgramData"},
    };
    ISystem& system = StartKind().System();
    for (const Case& one : cases) {
        char16_t buffer[120] = {};
        const std::u16string_view expected(one.expanded);
        EXPECT_EQ(system.ExpandEnvironment(one.text, buffer, 120), expected.size() + 1);
        EXPECT_EQ(std::u16string_view(buffer), expected);
    }
    char16_t small[8] = u"keep";
    EXPECT_EQ(system.ExpandEnvironment(u"%Tool%\\", small, 8), 9U);
    EXPECT_EQ(system.GetEnvironment(u"TOOL", small, 7), 8U);
    EXPECT_EQ(system.GetEnvironment(u"absent", small, 8), 0U);
    EXPECT_EQ(std::u16string_view(small), u"keep");
    EXPECT_EQ(system.GetEnvironment(u"TOOL", small, 8), 7U);
}

TEST_P(ProcessContract, Guids_AreRandomOfVersion4) {
    ISystem& system = StartKind().System();
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        std::uint8_t guid[16] = {};
        ASSERT_TRUE(system.CreateGuid(guid));
        EXPECT_EQ(guid[7] & 0xF0, 0x40);
        EXPECT_EQ(guid[8] & 0xC0, 0x80);
        seen.emplace(reinterpret_cast<const char*>(guid), sizeof guid);
    }
    EXPECT_EQ(seen.size(), 100U);
}

TEST_P(ProcessContract, Mutex_KeepsOtherThreadsOutAndIsRecursive) {
    ISystem& system = StartKind().System();
    const MutexHandle mutex = system.OpenMutex(u"roundup-contract", true);
    const MutexHandle same = system.OpenMutex(u"roundup-contract", false);
    const MutexHandle other = system.OpenMutex(u"roundup-Contract", false);
    ASSERT_NE(mutex, 0U);
    ASSERT_NE(mutex, same);
    EXPECT_TRUE(system.LockMutex(same, 0));
    const auto tryElsewhere = [&](MutexHandle handle) {
        bool locked = false;
        std::thread([&] {
            locked = system.LockMutex(handle, 1);
            if (locked) system.UnlockMutex(handle);
        }).join();
        return locked;
    };
    EXPECT_FALSE(tryElsewhere(same));
    EXPECT_TRUE(tryElsewhere(other));
    std::thread([&] { system.UnlockMutex(mutex); }).join();
    system.UnlockMutex(mutex);
    EXPECT_FALSE(tryElsewhere(mutex));
    system.UnlockMutex(same);
    EXPECT_TRUE(tryElsewhere(mutex));
    for (const MutexHandle handle : {mutex, same, other}) system.CloseMutex(handle);
    EXPECT_FALSE(system.LockMutex(mutex, 0));
}

INSTANTIATE_TEST_SUITE_P(Machines, SystemContract,
                         ::testing::Values(MachineKind::InMemory, MachineKind::RecordedFolder), KindName);

INSTANTIATE_TEST_SUITE_P(Machines, ProcessContract, ::testing::ValuesIn(AllMachineKinds()), KindName);

}  // namespace
}  // namespace roundup
