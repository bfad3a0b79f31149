#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/windows/modulehost.h"

namespace roundup {
namespace {

bool Has(const std::vector<std::u16string>& keys, const char16_t* key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// SYSTEM_HANDLE_INFORMATION_EX, as the headers of the driver kit have it.
struct SystemHandle {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT trace, type;
    ULONG attributes, reserved;
};
struct SystemHandles {
    ULONG_PTR count, reserved;
    SystemHandle first[1];
};

// Of this process, in the system's own table: Wine does not count for GetProcessHandleCount.
int HandleCount() {
    constexpr int kExtendedHandles = 64;
    constexpr LONG kTooSmall = static_cast<LONG>(0xC0000004);
    const auto query = GetProcedure<LONG(WINAPI*)(int, void*, ULONG, ULONG*)>(::GetModuleHandleW(L"ntdll.dll"),
                                                                              "NtQuerySystemInformation");
    std::vector<std::uint64_t> block(1 << 14);
    const auto ask = [&] {
        return query(kExtendedHandles, block.data(), static_cast<ULONG>(block.size() * sizeof block[0]), nullptr);
    };
    LONG status = ask();
    for (; status == kTooSmall; status = ask()) block.resize(block.size() * 2);
    EXPECT_EQ(status, 0);
    const auto& table = *reinterpret_cast<const SystemHandles*>(block.data());
    return static_cast<int>(std::count_if(table.first, table.first + table.count, [](const SystemHandle& one) {
        return one.process == ::GetCurrentProcessId();
    }));
}

int ThreadCount() {
    const OwnedFile snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = ::Thread32First(snapshot.Get(), &entry); more; more = ::Thread32Next(snapshot.Get(), &entry)) {
        if (entry.th32OwnerProcessID == ::GetCurrentProcessId()) ++count;
    }
    return count;
}

// Threads of the system's pool come and go by themselves.
int ThreadCountAtRest(int wanted) {
    int count = ThreadCount();
    for (int i = 0; i < 100 && count > wanted; ++i, count = ThreadCount()) ::Sleep(50);
    return count;
}

TEST(Module, LoadsOneAfterAnother_LeaveNothingBehind) {
    const ScratchEntry entry(L"RoundupModuleTest");
    const LoadedModule module;
    // What the system's own libraries open once for the process is open after the first rounds.
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(Has(module.Load(), u"RoundupModuleTest"));
    const int handles = HandleCount();
    const int threads = ThreadCount();
    {
        const KernelHandle one(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        ASSERT_EQ(HandleCount(), handles + 1) << "the count counts";
    }
    constexpr int kRounds = 6;
    for (int i = 0; i < kRounds; ++i) (void)module.Load();
    EXPECT_LE(ThreadCountAtRest(threads), threads);
    // The system may still open one late for itself; what a load leaves comes once for each.
    EXPECT_LT(HandleCount(), handles + kRounds);
}

TEST(Module, LoadAndUnload_LeaveNothingBehind) {
    constexpr int kRounds = 4;
    const auto cycle = [] {
        {
            const LoadedModule module;
            (void)module.Load();
        }
        EXPECT_EQ(::GetModuleHandleW(L"Roundup.dll"), nullptr);
    };
    for (int i = 0; i < 2; ++i) cycle();
    const int handles = HandleCount();
    const int threads = ThreadCount();
    for (int i = 0; i < kRounds; ++i) cycle();
    EXPECT_LE(ThreadCountAtRest(threads), threads);
    // The system may still open one late for itself.
    EXPECT_LT(HandleCount(), handles + kRounds);
}

// A second thread makes and deletes entries for as long as the loads run. What stands before them is found every time;
// a walk ends at an entry that went before it was opened, so what stands behind them is only sure once all is still.
TEST(Module, RegistryThatChangesDuringTheWalk_LosesNothingBeforeTheChange) {
    const ScratchEntry first(L"AaRoundupStays"), last(L"ZzRoundupStays");
    const LoadedModule module;
    std::atomic<bool> stop{false};
    std::atomic<int> rounds{0};
    std::thread changer([&] {
        for (; !stop; ++rounds) {
            const ScratchEntry one(L"MmRoundupComes"), two(L"NnRoundupComes" + std::to_wstring(rounds % 7));
        }
    });
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(Has(module.Load(), u"AaRoundupStays"));
    }
    stop = true;
    changer.join();
    EXPECT_GT(rounds, 0);
    EXPECT_TRUE(Has(module.Load(), u"ZzRoundupStays"));
}

// Nobody may do anything with the entry, until its owner takes that back.
TEST(Module, EntryWithoutReadAccess_EndsItsWalkAlone) {
    const ScratchEntry before(L"AaRoundupBefore"), closed(L"MmRoundupClosed"), after(L"ZzRoundupAfter");
    SECURITY_DESCRIPTOR nobody;
    ACL empty;
    ASSERT_TRUE(::InitializeSecurityDescriptor(&nobody, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(::InitializeAcl(&empty, sizeof empty, ACL_REVISION));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&nobody, TRUE, &empty, FALSE));
    ASSERT_EQ(::RegSetKeySecurity(closed.Get(), DACL_SECURITY_INFORMATION, &nobody), ERROR_SUCCESS);
    HKEY key = nullptr;
    const std::wstring path = std::wstring(kUserUninstall) + L"\\MmRoundupClosed";
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key), ERROR_ACCESS_DENIED);
    const std::vector<std::u16string> keys = LoadedModule().Load();
    EXPECT_TRUE(Has(keys, u"AaRoundupBefore"));
    EXPECT_FALSE(Has(keys, u"MmRoundupClosed"));
    EXPECT_FALSE(Has(keys, u"ZzRoundupAfter"));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&nobody, TRUE, nullptr, FALSE));
    EXPECT_EQ(::RegSetKeySecurity(closed.Get(), DACL_SECURITY_INFORMATION, &nobody), ERROR_SUCCESS);
}

}  // namespace
}  // namespace roundup
