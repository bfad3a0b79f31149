// What a load through Roundup.dll costs beside the bare reading of the same keys.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>

#include "appcenter/appeunm/appmanager.h"
#include "platform/livemachine.h"
#include "tests/windows/modulehost.h"
#include "tests/windows/registrytrace.h"

namespace roundup {
namespace {

constexpr int kEntries = 1000;

// Entries such as Windows Installer writes them, which name no files: the registry is what their load costs.
std::vector<std::unique_ptr<ScratchEntry>> MakeEntries() {
    std::vector<std::unique_ptr<ScratchEntry>> entries;
    for (int i = 0; i < kEntries; ++i) {
        wchar_t code[40];
        std::swprintf(code, std::size(code), L"{%08X-5E1F-4C0D-9A66-0123456789AB}",
                      static_cast<unsigned>(i) * 2654435761U);
        entries.push_back(std::make_unique<ScratchEntry>(code));
        entries.back()->Text(L"InstallDate", L"20240131");
        entries.back()->Text(L"UninstallString", std::wstring(L"MsiExec.exe /X") + code);
        entries.back()->Text(L"InstallLocation", L"");
        entries.back()->Text(L"URLInfoAbout", L"https://www.example.com/notes");
    }
    return entries;
}

template <class Work>
double SecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(LoadCost, ThroughTheModule_IsAtMostHalfAgainTheBareRead) {
    const auto entries = MakeEntries();
    const std::unique_ptr<Machine> live = OpenLiveMachine();
    TracedMachine traced(*live);
    {
        const MachineScope scope(traced);
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        const auto goOn = [](std::uint32_t, void*) -> std::uint8_t { return 1; };
        ASSERT_FALSE(Failed(manager->LoadAppEx(goOn, nullptr, false)));
    }
    ASSERT_GT(traced.trace.Count(), std::size_t{kEntries} * 2) << "each entry is opened and closed";
    const LoadedModule module;
    double bare = std::numeric_limits<double>::max(), load = bare;
    // The best of some rounds, taken in turns: what is above it is the noise of the machine that measures.
    for (int i = 0; i < 5; ++i) {
        bare = std::min(bare, SecondsOf([&] { traced.trace.Replay(); }));
        load = std::min(load, SecondsOf([&] { (void)module.Load(); }));
    }
    std::printf("%zu calls: bare %.1f ms, load %.1f ms, ratio %.2f\n", traced.trace.Count(), bare * 1e3, load * 1e3,
                load / bare);
    EXPECT_LE(load / bare, 1.5);
}

}  // namespace
}  // namespace roundup
