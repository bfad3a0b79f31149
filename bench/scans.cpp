// How much the scans of the machine cost beside the reading itself, and what is asked of them afterwards.
//
// A machine in memory has 10,000 classes and 15,000 interfaces in each of two views, half of them in both, 3,000 type
// libraries, 8,000 file classes with as many extensions, 1,000 services and 500 makers' keys below Software, times the
// scale. Measured are all caches built one after the other, and the calls of the registry that this makes, made once
// more with nothing else done; then a hundred applications, one after the other, of the finished caches.
//     ratio         all caches to the bare calls of the registry
//     ratio_asked   all caches to the bare calls and the bare questions after the long forms of the paths that they
//                   read; at most 1.5 is wanted
//     com, classes  the same as ratio, for one cache alone
//     query_us      all queries for one application, which finds some twenty records
//     hub_ns        a query that reaches every interface, for each of them: what a closure that is not linear shows in
//
//     growth        the build for each key, and hub_growth the hub, to that at the smallest size
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/apppathcache.h"
#include "appcenter/appreggather/appreggather.h"
#include "appcenter/appreggather/classcache.h"
#include "appcenter/appreggather/comcache.h"
#include "appcenter/appreggather/commonfilescache.h"
#include "appcenter/appreggather/datafoldercache.h"
#include "appcenter/appreggather/servicecache.h"
#include "appcenter/appreggather/softwarekeycache.h"
#include "tests/support/machinebuilder.h"
#include "tests/windows/registrytrace.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

constexpr const char16_t* kClasses = u"HKLM\\SOFTWARE\\Classes\\";

std::u16string Id(const char16_t* kind, int number) {
    return FormatText(u"{%08X-%s-4C0D-9A66-0123456789AB}", static_cast<unsigned>(number) * 2654435761U, kind);
}
std::u16string Maker(int number) { return FormatText(u"Maker%c%d", static_cast<char16_t>(u'A' + number % 26), number); }
std::u16string Server(int number) {
    return FormatText(u"C:\\Program Files\\%s\\Product\\server%d.dll", Maker(number / 20), number);
}
std::u16string Program(int number) {
    return FormatText(u"C:\\Program Files\\%s\\Product\\program%d.exe", Maker(number / 40), number);
}

// Four classes have one server; ten interfaces belong to one type library, but every other one to the hub.
void AddCom(MachineBuilder& builder, int scale, const char16_t* view, int first) {
    const std::u16string base = std::u16string(kClasses) + view;
    for (int i = first; i < first + scale * 10; ++i) {
        const std::u16string key = base + u"CLSID\\" + Id(u"5E1F", i);
        builder.Text(key, u"", u"A class").Text(key + u"\\InprocServer32", u"", Server(i / 4));
        if (i % 2 == 0) builder.Text(key + u"\\ProgID", u"", FormatText(u"Maker.Object.%d", i));
        if (i % 3 == 0) builder.Text(key + u"\\TypeLib", u"", Id(u"71B0", i / 4));
    }
    for (int i = first; i < first + scale * 15; ++i) {
        const std::u16string key = base + u"Interface\\" + Id(u"1FAC", i);
        builder.Text(key + u"\\TypeLib", u"", Id(u"71B0", i % 2 == 0 ? -1 : i / 10));
        builder.Text(key + u"\\ProxyStubClsid32", u"", Id(u"0A57", i % 2 == 0 ? i % 100 : 1000 + i / 10));
    }
}

void AddClasses(MachineBuilder& builder, int scale) {
    for (int i = 0; i < scale * 3; ++i) {
        const std::u16string key = std::u16string(kClasses) + u"TypeLib\\" + Id(u"71B0", i) + u"\\1.0";
        builder.Text(key, u"", u"A library").Text(key + u"\\0\\win32", u"", Server(i));
    }
    builder.Text(std::u16string(kClasses) + u"TypeLib\\" + Id(u"71B0", -1) + u"\\1.0\\0\\win32", u"", u"C:\\hub.tlb");
    for (int i = 0; i < scale * 8; ++i) {
        const std::u16string name = FormatText(u"Maker.Document.%d", i);
        builder.Text(kClasses + name + u"\\shell\\open\\command", u"", u"\"" + Program(i) + u"\" \"%1\"");
        builder.Text(kClasses + FormatText(u".ext%d", i), u"", name);
    }
    for (int i = 0; i < scale; ++i) {
        const std::u16string key = FormatText(u"HKLM\\SYSTEM\\CurrentControlSet\\services\\Service%d", i);
        builder.Text(key, u"ImagePath", i % 2 == 0 ? u"C:\\Windows\\System32\\svchost.exe -k x" : Program(i));
    }
    for (int i = 0; i < scale / 2; ++i) {
        const std::u16string key = u"HKLM\\SOFTWARE\\" + Maker(i) + FormatText(u"\\Product %d", i);
        builder.Text(key, u"Path", u"C:\\").Key(key + u"\\Settings").Key(u"HKCU\\Software\\" + Maker(i) + u"\\Recent");
        builder.Folder(u"C:\\ProgramData\\" + Maker(i) + u"\\Data");
    }
}

std::unique_ptr<Machine> MakeMachine(int scale) {
    MachineBuilder builder;
    AddCom(builder, scale, u"", 0);
    AddCom(builder, scale, u"Wow6432Node\\", scale * 5);
    AddClasses(builder, scale);
    for (int i = 0; i < scale * 4; ++i) builder.File(Server(i));
    for (int i = 0; i < scale * 8; ++i) builder.File(Program(i));
    return builder.Build();
}

double CpuSeconds() {
    std::timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The best of some runs: what is above it is the noise of the machine that measures.
struct Best {
    double seconds = std::numeric_limits<double>::max();
    template <class Work>
    void Measure(Work work) {
        const double start = CpuSeconds();
        work();
        seconds = std::min(seconds, CpuSeconds() - start);
    }
};

// What was built: it goes at the end of the process as a rule, so that its end is not measured.
using Built = std::vector<std::shared_ptr<void>>;

template <class... Caches>
void Build(Built& built) {
    (built.push_back(std::make_shared<Caches>()), ...);
}
constexpr auto kBuildCom = Build<CComCache>;
constexpr auto kBuildClasses = Build<CClassCache>;
constexpr auto kBuildAll =
    Build<CComCache, CClassCache, CServiceCache, CAppPathCache, CDataFolderCache, CSoftwareKeyCache, CCommonFilesCache>;

void MeasureBuild(Best& best, void (*build)(Built&)) {
    Built built;
    best.Measure([&] { build(built); });
}

// The bare calls that such a build makes.
double Bare(Machine& machine, void (*build)(Built&), std::size_t& calls) {
    TracedMachine traced(machine);
    const MachineScope scope(traced);
    Built built;
    build(built);
    TracedMachine again(machine);
    const MachineScope inner(again);
    build(built);
    calls = again.trace.Count();
    Best best;
    for (int i = 0; i < 5; ++i) best.Measure([&] { again.trace.Replay(); });
    return best.seconds;
}

double BareQuestions(Machine& machine, int scale) {
    Best best;
    char16_t buffer[520];
    for (int pass = 0; pass < 5; ++pass) {
        best.Measure([&] {
            const auto ask = [&](const std::u16string& path) {
                benchmark::DoNotOptimize(machine.Files().GetLongPath(path.c_str(), buffer, std::size(buffer)));
            };
            for (int i = 0; i < scale * 4; ++i) ask(Server(i));
            for (int i = 0; i < scale * 8; ++i) ask(Program(i));
        });
    }
    return best.seconds;
}

void FillApp(CApp& app, int number) {
    app.pwszName = OwnedString(Maker(number) + u" Product Suite");
    app.pwszPublisher = OwnedString(Maker(number));
    for (int i = 0; i < 20; ++i) app.MakeGathered().FilePaths.Add(Server(number * 20 + i));
    for (int i = 0; i < 40; ++i) app.MakeGathered().FilePaths.Add(Program(number * 40 + i));
    for (int i = 0; i < 1000; ++i)
        app.MakeGathered().FilePaths.Add(FormatText(u"C:\\Program Files\\%s\\data%d.bin", Maker(number), i));
}

double Queries(benchmark::State& state) {
    Best best;
    for (int pass = 0; pass < 3; ++pass) {
        std::vector<std::unique_ptr<CApp>> apps;
        for (int i = 0; i < 100; ++i) FillApp(*apps.emplace_back(std::make_unique<CApp>()), i % 20);
        best.Measure([&] {
            for (const auto& app : apps) {
                CAppRegGather gather(*app);
                gather.RunGather(RegGatherScan::kAll);
                if (gather.RegItems.empty()) state.SkipWithError("nothing was found");
            }
        });
    }
    return best.seconds / 100;
}

double Hub() {
    CApp app;
    app.MakeGathered().FilePaths.Add(u"C:\\hub.tlb");
    Best best;
    for (int pass = 0; pass < 3; ++pass) {
        RegGatherResults results;
        best.Measure([&] { ProcessWide<CComCache>().FindComItems(app, results); });
    }
    return best.seconds;
}

void Scans(benchmark::State& state) {
    static double firstEach = 0, firstHub = 0;
    const int scale = static_cast<int>(state.range(0));
    const std::unique_ptr<Machine> machine = MakeMachine(scale);
    const MachineScope scope(*machine);
    std::size_t calls = 0, some = 0;
    const double bare = Bare(*machine, kBuildAll, calls);
    const double bareCom = Bare(*machine, kBuildCom, some);
    const double bareClasses = Bare(*machine, kBuildClasses, some);
    const double asked = BareQuestions(*machine, scale);
    Best all, com, classes;
    for (auto _ : state) {
        MeasureBuild(all, kBuildAll);
        MeasureBuild(com, kBuildCom);
        MeasureBuild(classes, kBuildClasses);
    }
    const double each = all.seconds / static_cast<double>(calls);
    const double hub = Hub() / (scale * 15);
    if (firstEach == 0) firstEach = each, firstHub = hub;
    state.counters["bare_ms"] = bare * 1e3;
    state.counters["asked_ms"] = asked * 1e3;
    state.counters["all_ms"] = all.seconds * 1e3;
    state.counters["ratio"] = all.seconds / bare;
    state.counters["ratio_asked"] = all.seconds / (bare + asked);
    state.counters["com"] = com.seconds / bareCom;
    state.counters["classes"] = classes.seconds / bareClasses;
    state.counters["query_us"] = Queries(state) * 1e6;
    state.counters["hub_ns"] = hub * 1e9;
    state.counters["growth"] = each / firstEach;
    state.counters["hub_growth"] = hub / firstHub;
}

BENCHMARK(Scans)->Arg(250)->Iterations(10);
BENCHMARK(Scans)->Arg(1000)->Iterations(5);
BENCHMARK(Scans)->Arg(4000)->Iterations(3);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
