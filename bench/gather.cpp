// The walk of a gather through the folders of one application, beside the bare enumeration of the same tree through the
// seam, on a recorded machine on a real file system. The argument is the number of files. ratio is that of the two;
// find is that to `find DIR -type f -printf '%s %p\n'`, as whole processes would see it; bytes_file tells what the
// application holds for a file beyond the texts of its paths.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appanalyze/analyzeapp.h"
#include "appcenter/appanalyze/walks.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/tempfolder.h"
#include "utility/filesearch.h"

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

void Walk(benchmark::State& state) {
    const TempFolder folder;
    FillTree(folder, static_cast<int>(state.range(0)));
    const OwnedString top(u"C:\\Apps\\Tool");
    double bare = 1e9, walk = 1e9, bytes = 0;
    std::size_t found = 0, gathered = 0;
    const auto open = [&] {
        OpenOptions options;
        options.folder = folder.Text();
        SourceError error;
        return OpenRecordedMachine(options, error);
    };
    for (auto _ : state) {
        {
            const std::unique_ptr<Machine> machine = open();
            const MachineScope scope(*machine);
            bare = std::min(bare, Seconds([&] { found = Enumerate(std::u16string(top.View())); }));
        }
        const std::unique_ptr<Machine> machine = open();
        const MachineScope scope(*machine);
        CApp app;
        const CAppRuleSet rules(RuleSetSource{});
        walk = std::min(walk, Seconds([&] { WalkLocation(top, rules, {AddGathered, &app}, nullptr); }));
        gathered = app.Files.size();
        std::size_t texts = 0;
        for (const auto& file : app.Files) texts += (file->pwszPath.Length() * 2 + file->pwszShortPath.Length()) * 2;
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

BENCHMARK(Walk)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
