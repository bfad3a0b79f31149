// How much a load of the catalogue costs beside the reading itself.
//
// A machine in memory has one Uninstall key with so many entries of ten values each. Measured are one bare read of
// those keys and values through the registry of the seam with nothing else done, the walk of the source that turns
// them into applications, and the whole load. The ratio of the second to the first is what the source adds; it should
// stay at or below 1.5, and the time per entry should grow by at most a third from 1,000 to 100,000 entries.
//
// CPU time is that of the process: while the source's thread walks, no other one does anything.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/uninstallsource.h"
#include "tests/support/machinebuilder.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

constexpr const char16_t* kUninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const char16_t* kValueNames[] = {u"DisplayName",     u"DisplayVersion",  u"Publisher",     u"InstallDate",
                                           u"InstallLocation", u"UninstallString", u"EstimatedSize", u"NoModify",
                                           u"URLInfoAbout",    u"Language"};

// What a setup program writes: a folder of its own with the uninstaller in it.
std::unique_ptr<Machine> MakeMachine(int entries) {
    MachineBuilder builder;
    for (int i = 0; i < entries; ++i) {
        const std::u16string key = FormatText(u"HKLM\\%s\\{%08X-5E1F-4C0D-9A66-0123456789AB}", kUninstallKey,
                                              static_cast<unsigned>(i) * 2654435761U);
        const std::u16string folder = FormatText(u"C:\\Program Files\\Otter Works\\Otter Notes %d", i);
        const std::u16string program = folder + u"\\uninstall.exe";
        builder.Text(key, u"DisplayName", FormatText(u"Otter Notes %d", i))
            .Text(key, u"DisplayVersion", FormatText(u"%d.4.1024", i % 30))
            .Text(key, u"Publisher", u"Otter Works International")
            .Text(key, u"InstallDate", u"20240131")
            .Text(key, u"InstallLocation", folder)
            .Text(key, u"UninstallString", u"\"" + program + u"\" /S")
            .Dword(key, u"EstimatedSize", 20480)
            .Dword(key, u"NoModify", 1)
            .Text(key, u"URLInfoAbout", u"https://www.example.com/notes")
            .Dword(key, u"Language", 1033);
        builder.File(program);
    }
    return builder.Build();
}

double CpuSeconds() {
    std::timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double WallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

struct OpenedKey {
    OpenedKey(IRegistry& registry, KeyHandle parent, const char16_t* name) : m_registry(registry) {
        registry.OpenKey(parent, name, kKeyReadWrite | kKeyWow64Key64, key);
        registry.QueryInfo(key, info);
    }
    ~OpenedKey() { m_registry.CloseKey(key); }
    KeyHandle key = 0;
    KeyInfo info;

  private:
    IRegistry& m_registry;
};

std::uint64_t BareRead(IRegistry& registry) {
    std::uint64_t bytes = 0;
    std::vector<std::byte> data(4096);
    char16_t name[256];
    const OpenedKey root(registry, kHkeyLocalMachine, kUninstallKey);
    for (std::uint32_t i = 0; i < root.info.subKeys; ++i) {
        auto length = static_cast<std::uint32_t>(std::size(name));
        registry.EnumKey(root.key, i, name, length);
        const OpenedKey entry(registry, root.key, name);
        for (const char16_t* const value : kValueNames) {
            std::uint32_t type = 0;
            auto size = static_cast<std::uint32_t>(data.size());
            registry.QueryValue(entry.key, value, type, data.data(), size);
            bytes += size;
        }
    }
    return bytes;
}

class AlwaysOn final : public IContinue {
  public:
    std::uint8_t IsContinue() const noexcept override { return 1; }
};

void Walk(AppList& list) {
    const AlwaysOn goOn;
    const UninstallEnumerator source(goOn, list, kHkeyLocalMachine, true);
}

// The best of some runs: what is above it is the noise of the machine that measures.
struct Best {
    double seconds = std::numeric_limits<double>::max();
    template <class Clock, class Work>
    void Measure(Clock clock, Work work) {
        const double start = clock();
        work();
        seconds = std::min(seconds, clock() - start);
    }
    double NanosecondsEach(std::int64_t count) const { return seconds * 1e9 / static_cast<double>(count); }
};

double NanosecondsAtFewest(double nanoseconds) {
    static const double atFewest = nanoseconds;
    return atFewest;
}

void CatalogueLoad(benchmark::State& state) {
    const std::int64_t entries = state.range(0);
    const std::unique_ptr<Machine> machine = MakeMachine(static_cast<int>(entries));
    const MachineScope scope(*machine);
    Best bare;
    Best walk;
    Best load;
    for (auto _ : state) {
        bare.Measure(CpuSeconds, [&] { benchmark::DoNotOptimize(BareRead(machine->Registry())); });
        AppList list;
        walk.Measure(CpuSeconds, [&] { Walk(list); });
        if (static_cast<std::int64_t>(list.size()) != entries) state.SkipWithError("entries were lost");
        list.clear();
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        const auto goOn = [](std::uint32_t, void*) -> std::uint8_t { return 1; };
        load.Measure(WallSeconds, [&] { Ignore(manager->LoadAppEx(goOn, nullptr, false), u"counted above"); });
    }
    const double each = walk.NanosecondsEach(entries);
    state.counters["bare_ns"] = bare.NanosecondsEach(entries);
    state.counters["walk_ns"] = each;
    state.counters["ratio"] = walk.seconds / bare.seconds;
    state.counters["growth"] = each / NanosecondsAtFewest(each);
    state.counters["load_wall_ns"] = load.NanosecondsEach(entries);
}
BENCHMARK(CatalogueLoad)->Arg(1000)->Iterations(30)->Unit(benchmark::kMillisecond);
BENCHMARK(CatalogueLoad)->Arg(10000)->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK(CatalogueLoad)->Arg(100000)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
