// How much a load of the catalogue costs beside the reading itself.
//
// A machine in memory has one Uninstall key with so many entries of ten values each: such as Windows Installer writes
// them, which name no file of their own, or such as a setup program does, with a folder and an uninstaller in it.
// Measured are one bare read of those keys and values through the registry of the seam with nothing else done, the
// bare questions about the folder and the program through the file system of the seam, the walk of the source that
// turns the entries into applications, and the whole load.
//
//     ratio         the walk to the bare read of the registry; at most 1.5 is wanted
//     ratio_asked   the walk to the bare read and the bare questions together
//     first_ns      the first walk, for which the operating system has to bring up the memory
//     growth        time per entry to that at the smallest size; at most a third more is wanted
//
// Times are of the thread that works, but that of the whole load, which is by the clock on the wall.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
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

constexpr std::int64_t kFewest = 1000;

enum class Writer : std::uint8_t { Installer, Setup };

// Scatters the entries, which the registry lists by their codes.
unsigned CodeOf(std::int64_t number) { return static_cast<unsigned>(number) * 2654435761U; }

std::u16string Folder(std::int64_t number) {
    return FormatText(u"C:\\Program Files\\Otter Works\\Otter Notes %d", static_cast<int>(number));
}
std::u16string Program(std::int64_t number) { return Folder(number) + u"\\uninstall.exe"; }

std::unique_ptr<Machine> MakeMachine(std::int64_t entries, Writer writer) {
    const bool setup = writer == Writer::Setup;
    MachineBuilder builder;
    for (std::int64_t i = 0; i < entries; ++i) {
        const std::u16string code = FormatText(u"{%08X-5E1F-4C0D-9A66-0123456789AB}", CodeOf(i));
        const std::u16string key = FormatText(u"HKLM\\%s\\%s", kUninstallKey, code);
        builder.Text(key, u"DisplayName", FormatText(u"Otter Notes %d", static_cast<int>(i)))
            .Text(key, u"DisplayVersion", FormatText(u"%d.4.1024", static_cast<int>(i % 30)))
            .Text(key, u"Publisher", u"Otter Works International")
            .Text(key, u"InstallDate", u"20240131")
            .Text(key, u"InstallLocation", setup ? Folder(i) : u"")
            .Text(key, u"UninstallString", setup ? u"\"" + Program(i) + u"\" /S" : u"MsiExec.exe /X" + code)
            .Dword(key, u"EstimatedSize", 20480)
            .Dword(key, u"NoModify", 1)
            .Text(key, u"URLInfoAbout", u"https://www.example.com/notes")
            .Dword(key, u"Language", 1033);
        if (setup) builder.File(Program(i));
    }
    return builder.Build();
}

// The paths of all entries, in the order in which a walk of the registry comes to them.
std::vector<std::u16string> PathsInOrder(std::int64_t entries) {
    std::vector<std::int64_t> numbers(static_cast<std::size_t>(entries));
    std::iota(numbers.begin(), numbers.end(), std::int64_t{0});
    std::ranges::sort(numbers, {}, CodeOf);
    std::vector<std::u16string> paths;
    for (const std::int64_t number : numbers) {
        paths.push_back(Folder(number));
        paths.push_back(Program(number));
    }
    return paths;
}

double CpuSeconds() {
    std::timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
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

void AskFiles(IFileSystem& files, const std::vector<std::u16string>& paths) {
    char16_t buffer[520];
    for (const std::u16string& path : paths) {
        benchmark::DoNotOptimize(files.GetAttributes(path.c_str()));
        benchmark::DoNotOptimize(files.GetLongPath(path.c_str(), buffer, std::size(buffer)));
    }
}

// Hears the source's thread ask before each entry and once more behind the last one, and takes its time there.
class WalkClock final : public IContinue {
  public:
    explicit WalkClock(std::int64_t entries) : m_left(entries) {}
    std::uint8_t IsContinue() const noexcept override {
        if (!m_started) m_start = CpuSeconds(), m_started = true;
        if (m_left-- == 0) m_seconds = CpuSeconds() - m_start;
        return 1;
    }
    double Seconds() const noexcept { return m_seconds; }

  private:
    mutable std::int64_t m_left;
    mutable bool m_started = false;
    mutable double m_start = 0;
    mutable double m_seconds = 0;
};

// The best of some runs: what is above it is the noise of the machine that measures.
struct Best {
    double seconds = std::numeric_limits<double>::max();
    void Add(double measured) { seconds = std::min(seconds, measured); }
    template <class Clock, class Work>
    void Measure(Clock clock, Work work) {
        const double start = clock();
        work();
        Add(clock() - start);
    }
    double NanosecondsEach(std::int64_t count) const { return seconds * 1e9 / static_cast<double>(count); }
};

void CatalogueLoad(benchmark::State& state, Writer writer) {
    static std::map<Writer, double> atFewest;  // nanoseconds each at the smallest size, which is measured first
    const std::int64_t entries = state.range(0);
    const std::unique_ptr<Machine> machine = MakeMachine(entries, writer);
    const MachineScope scope(*machine);
    const std::vector<std::u16string> paths = PathsInOrder(writer == Writer::Setup ? entries : 0);
    Best bare;
    Best asked;
    Best walk;
    Best load;
    double first = 0;
    for (auto _ : state) {
        bare.Measure(CpuSeconds, [&] { benchmark::DoNotOptimize(BareRead(machine->Registry())); });
        asked.Measure(CpuSeconds, [&] { AskFiles(machine->Files(), paths); });
        AppList list;
        const WalkClock clock(entries);
        { const UninstallEnumerator source(clock, list, kHkeyLocalMachine, true); }
        walk.Add(clock.Seconds());
        if (static_cast<std::int64_t>(list.size()) != entries) state.SkipWithError("entries were lost");
        if (first == 0) first = walk.NanosecondsEach(entries);
    }
    // Behind the others, since a load leaves the heap in pieces that a walk of its own never meets.
    for (int pass = 0; pass < 3; ++pass) {
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        const auto goOn = [](std::uint32_t, void*) -> std::uint8_t { return 1; };
        load.Measure(WallSeconds, [&] { Ignore(manager->LoadAppEx(goOn, nullptr, false), u"counted above"); });
    }
    const double each = walk.NanosecondsEach(entries);
    state.counters["bare_ns"] = bare.NanosecondsEach(entries);
    state.counters["asked_ns"] = asked.NanosecondsEach(entries);
    state.counters["walk_ns"] = each;
    state.counters["first_ns"] = first;
    state.counters["ratio"] = walk.seconds / bare.seconds;
    state.counters["ratio_asked"] = walk.seconds / (bare.seconds + asked.seconds);
    if (entries == kFewest) atFewest[writer] = each;
    state.counters["growth"] = each / atFewest[writer];
    state.counters["load_wall_ns"] = load.NanosecondsEach(entries);
}

// Never fewer than three passes: the first one orders what the machine lists from then on.
BENCHMARK_CAPTURE(CatalogueLoad, installer, Writer::Installer)->Arg(kFewest)->Iterations(50);
BENCHMARK_CAPTURE(CatalogueLoad, installer, Writer::Installer)->Arg(10000)->Iterations(10);
BENCHMARK_CAPTURE(CatalogueLoad, installer, Writer::Installer)->Arg(100000)->Iterations(4);
BENCHMARK_CAPTURE(CatalogueLoad, setup, Writer::Setup)->Arg(kFewest)->Iterations(50);
BENCHMARK_CAPTURE(CatalogueLoad, setup, Writer::Setup)->Arg(10000)->Iterations(10);
BENCHMARK_CAPTURE(CatalogueLoad, setup, Writer::Setup)->Arg(100000)->Iterations(4);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
