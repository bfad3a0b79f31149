// The walk of a gather through the folders of one application, beside the bare enumeration of the same tree through the
// seam, on a recorded machine on a real file system. The argument is the number of files. ratio is that of the two;
// find is that to `find DIR -type f -printf '%s %p\n'`, as whole processes would see it; bytes_file tells what the
// application holds for a file beyond the texts of its paths.
//
// Estimate works out the sizes of so many applications of forty files each: busy is the share of the computer's
// processors that works meanwhile. Links asks which shortcuts open a program, of so many on the machine: again is what
// the second question costs beside the first, which reads them all; link_us is the time for each link.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appanalyze/analyzeapp.h"
#include "appcenter/appanalyze/walks.h"
#include "appcenter/appeunm/analysispool.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/linkwriter.h"
#include "tests/support/tempfolder.h"
#include "utility/filesearch.h"
#include "utility/shortcutscanner.h"
#include "utility/utf.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace roundup {
namespace {

double Seconds(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Twenty files a folder, ten folders in each, as deep as that takes.
void FillTree(const TempFolder& folder, int files) {
    folder.Write("machine.ini", "");
    std::vector<std::filesystem::path> waiting{folder.Path() / "drives" / "c" / "Apps" / "Tool"};
    for (std::size_t next = 0; files > 0; ++next) {
        const std::filesystem::path here = waiting[next];
        std::filesystem::create_directories(here);
        for (int i = 0; i < 20 && files > 0; ++i, --files) {
            std::ofstream(here / ("module number " + std::to_string(i) + ".dat")) << "some bytes";
        }
        for (int i = 0; i < 10; ++i) waiting.push_back(here / ("folder " + std::to_string(i)));
    }
}

std::size_t Enumerate(const std::u16string& top) {
    std::size_t files = 0;
    std::vector<std::u16string> waiting{top};
    while (!waiting.empty()) {
        const std::u16string folder = std::move(waiting.back());
        waiting.pop_back();
        for (FileSearch search((folder + u"\\*").c_str()); search.Next();) {
            if (!search.IsFolder()) {
                ++files;
            } else {
                waiting.push_back(folder + u"\\" + std::u16string(search.Name()));
            }
        }
    }
    return files;
}

std::size_t BytesInUse() {
#if defined(__GLIBC__)
    return mallinfo2().uordblks;
#else
    return 0;
#endif
}

std::unique_ptr<Machine> OpenFolder(const TempFolder& folder) {
    OpenOptions options;
    options.folder = folder.Text();
    SourceError error;
    return OpenRecordedMachine(options, error);
}

void Walk(benchmark::State& state) {
    const TempFolder folder;
    FillTree(folder, static_cast<int>(state.range(0)));
    const OwnedString top(u"C:\\Apps\\Tool");
    double bare = 1e9, walk = 1e9, bytes = 0;
    std::size_t found = 0, gathered = 0;
    for (auto _ : state) {
        {
            const std::unique_ptr<Machine> machine = OpenFolder(folder);
            const MachineScope scope(*machine);
            bare = std::min(bare, Seconds([&] { found = Enumerate(std::u16string(top.View())); }));
        }
        const std::unique_ptr<Machine> machine = OpenFolder(folder);
        const MachineScope scope(*machine);
        CApp app;
        const CAppRuleSet rules(RuleSetSource{});
        walk = std::min(walk, Seconds([&] { WalkLocation(top, rules, {AddGathered, &app}, nullptr); }));
        gathered = app.Gathered().Files.size();
        std::size_t texts = 0;
        for (const auto& file : app.Gathered().Files)
            texts += (file->pwszPath.Length() * 2 + file->pwszShortPath.Length()) * 2;
        const std::size_t before = BytesInUse();
        app.UnGather();
        bytes = (static_cast<double>(before - BytesInUse()) - static_cast<double>(texts)) /
                static_cast<double>(std::max<std::size_t>(gathered, 1));
    }
    if (found != gathered || found != static_cast<std::size_t>(state.range(0)))
        state.SkipWithError("files are missing");
    const std::string find = "find '" + folder.Text() + "' -type f -printf '%s %p\\n' > /dev/null";
    double other = 1e9;
    for (int i = 0; i < 3; ++i) {
        other = std::min(other, Seconds([&] { benchmark::DoNotOptimize(std::system(find.c_str())); }));
    }
    state.counters["bare_ms"] = bare * 1e3;
    state.counters["walk_ms"] = walk * 1e3;
    state.counters["ratio"] = walk / bare;
    state.counters["find"] = walk / other;
    state.counters["bytes_file"] = bytes;
}

// A walk of a thousand files takes two milliseconds, which any other process distorts: the best of many counts.
BENCHMARK(Walk)->Arg(1000)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK(Walk)->Arg(10000)->Iterations(8)->Unit(benchmark::kMillisecond);
BENCHMARK(Walk)->Arg(100000)->Iterations(3)->Unit(benchmark::kMillisecond);

void Estimate(benchmark::State& state) {
    struct Always final : IContinue {
        std::uint8_t IsContinue() const noexcept override { return 1; }
    };
    const TempFolder folder;
    folder.Write("machine.ini", "");
    for (int app = 0; app < state.range(0); ++app) {
        for (int file = 0; file < 40; ++file) {
            folder.Write("drives/c/Apps/" + std::to_string(app) + "/part " + std::to_string(file % 4) + "/file " +
                             std::to_string(file) + (file == 0 ? ".exe" : ".dat"),
                         "some bytes");
        }
    }
    double wall = 0, processor = 0;
    for (auto _ : state) {
        const std::unique_ptr<Machine> machine = OpenFolder(folder);
        const MachineScope scope(*machine);
        AppList apps;
        for (int i = 0; i < state.range(0); ++i) {
            auto app = RefPtr<CApp>::Adopt(new CApp);
            app->pwszInstallLoc = OwnedString(u"C:\\Apps\\" + FromUtf8(std::to_string(i)));
            apps.push_back(std::move(app));
        }
        const std::clock_t start = std::clock();
        wall += Seconds([&] { RunAnalysisPool(apps, Always()); });
        processor += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        if (apps.back()->GetEstimatedSize() != 400) state.SkipWithError("a size is wrong");
    }
    state.counters["busy"] = processor / wall / std::thread::hardware_concurrency();
    state.counters["app_us"] = wall * 1e6 / static_cast<double>(state.iterations() * state.range(0));
}

void Links(benchmark::State& state) {
    const TempFolder folder;
    folder.Write("machine.ini", "");
    folder.Write("drives/c/Apps/tool.exe", "MZ");
    LinkWriter link;
    link.idListPath = u"C:\\Apps\\tool.exe";
    const std::string bytes = link.Write();
    for (int i = 0; i < state.range(0); ++i) {
        folder.Write("drives/c/ProgramData/Microsoft/Windows/Start Menu/Programs/Group " + std::to_string(i / 50) +
                         "/link " + std::to_string(i) + ".lnk",
                     bytes);
    }
    double first = 0, second = 0;
    for (auto _ : state) {
        const std::unique_ptr<Machine> machine = OpenFolder(folder);
        const MachineScope scope(*machine);
        std::vector<const ShortcutRecord*> records;
        first += Seconds([&] { ShortcutScanner::Instance().FindByTarget(u"C:\\Apps\\tool.exe", records); });
        if (records.size() != static_cast<std::size_t>(state.range(0))) state.SkipWithError("links are missing");
        second += Seconds([&] { ShortcutScanner::Instance().FindByTarget(u"C:\\Apps\\other.exe", records); });
    }
    state.counters["again"] = second / first;
    state.counters["link_us"] = first * 1e6 / static_cast<double>(state.iterations() * state.range(0));
}

BENCHMARK(Estimate)->Arg(1000)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(Links)->Arg(5000)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
