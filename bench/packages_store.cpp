// What the source of store packages costs beside the bare reading of what it needs.
//
// A machine on a real file system has so many packages with a manifest, a logo and 38 more files each, so 500 packages
// have 20,000 files. Measured are the bare reads through the seam with nothing else done (the keys of the families, of
// the classes and of the packages with their values, each manifest once, and an enumeration of each folder with all
// below it), and the enumeration of the source with the completion of its packages.
//
//     ratio    the source to the bare reads; at most 1.5 is wanted
//     growth   time per package to that at the smallest size
//
// Times are processor times of the process, as the source has a thread of its own.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "appcenter/app/icontinue.h"
#include "appcenter/enumappx/loadappx.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/machinebuilder.h"
#include "tests/support/tempfolder.h"
#include "utility/filesearch.h"
#include "utility/formattext.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

constexpr const char16_t* kClasses = u"Software\\Classes";
constexpr const char16_t* kRepository =
    u"Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository";
constexpr int kFilesPerFolder = 19;
constexpr std::int64_t kFewest = 125;

constexpr const char* kManifest =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<Package xmlns=\"x\"><Identity Name=\"Otter\" "
    "Publisher=\"CN=Otter\" "
    "Version=\"1.0.0.0\" ProcessorArchitecture=\"x64\"/><Properties><DisplayName>Otter</DisplayName>"
    "<Logo>a\\Logo.png</Logo></Properties><Dependencies><PackageDependency Name=\"Otter.Frame\" "
    "MinVersion=\"1.0.0.0\"/>"
    "</Dependencies><Applications><Application Id=\"App\"><uap:VisualElements Square150x150Logo=\"a\\Logo.png\" "
    "BackgroundColor=\"#102030\"/></Application></Applications></Package>";

std::u16string FullName(std::int64_t number) {
    return FormatText(u"Otter.Notes%04d_1.0.0.0_x64__abcdefgh12345", static_cast<int>(number));
}

void WriteMachine(std::int64_t packages, const std::string& folder) {
    MachineBuilder builder;
    for (std::int64_t i = 0; i < packages; ++i) {
        const std::u16string full = FullName(i);
        const std::u16string root = u"C:\\Program Files\\WindowsApps\\" + full;
        const std::u16string key = FormatText(u"HKCU\\%s\\Packages\\%s", kRepository, full);
        const std::u16string family = FormatText(u"Otter.Notes%04d_abcdefgh12345", static_cast<int>(i));
        builder.Text(key, u"DisplayName", FormatText(u"Notes %d", static_cast<int>(i)))
            .Text(key, u"PackageRootFolder", root)
            .Text(key, u"PackageID", full)
            .Qword(key, u"OSMinVersion", 0x000A000000000000)
            .Qword(key, u"OSMaxVersionTested", 0x000A000000000000)
            .Qword(FormatText(u"HKCU\\%s\\Families\\%s\\%s", kRepository, family, full), u"InstallTime",
                   133513056000000000)
            .File(root + u"\\AppxManifest.xml", kManifest)
            .File(root + u"\\a\\Logo.png", std::string(500, 'l'));
        for (int file = 0; file < kFilesPerFolder; ++file) {
            builder.File(root + FormatText(u"\\part%d.dll", file), "MZ")
                .File(root + FormatText(u"\\a\\b%d.dat", file), "x");
        }
    }
    builder.WriteTo(folder);
}

class StoreMachine {
  public:
    explicit StoreMachine(std::int64_t packages) {
        WriteMachine(packages, m_folder.Text() + "/machine");
        Reopen();
    }
    // A machine that has read nothing yet.
    void Reopen() {
        m_scope.reset();
        OpenOptions options;
        options.folder = m_folder.Text() + "/machine";
        SourceError error;
        m_machine = OpenRecordedMachine(options, error);
        if (!m_machine) std::abort();
        m_scope.emplace(*m_machine);
    }

  private:
    TempFolder m_folder;
    std::unique_ptr<Machine> m_machine;
    std::optional<MachineScope> m_scope;
};

struct Always final : IContinue {
    std::uint8_t IsContinue() const noexcept override { return 1; }
};

std::size_t EnumerateFolder(const std::u16string& folder) {
    std::size_t count = 0;
    for (FileSearch search((folder + u"\\*").c_str()); search.Next();) {
        ++count;
        if (search.IsFolder()) count += EnumerateFolder(folder + u"\\" + std::u16string(search.Name()));
    }
    return count;
}

// All values of a key and the names of its subkeys.
std::vector<std::u16string> ReadKey(const std::u16string& path, std::u16string* folder = nullptr) {
    IRegistry& registry = CurrentMachine().Registry();
    KeyHandle key = 0;
    std::vector<std::u16string> names;
    if (registry.OpenKey(kHkeyCurrentUser, path.c_str(), kKeyRead, key) != kErrorSuccess) return names;
    char16_t name[260];
    for (std::uint32_t i = 0;; ++i) {
        std::uint32_t length = std::size(name);
        if (registry.EnumKey(key, i, name, length) != kErrorSuccess) break;
        names.emplace_back(name, length);
    }
    char16_t data[512];
    for (std::uint32_t i = 0;; ++i) {
        std::uint32_t length = std::size(name), type = 0, size = sizeof data;
        if (registry.EnumValue(key, i, name, length, type, data, size) != kErrorSuccess) break;
        if (folder != nullptr && std::u16string_view(name) == u"PackageRootFolder") *folder = data;
    }
    registry.CloseKey(key);
    return names;
}

std::size_t ReadBare() {
    std::size_t count = ReadKey(kClasses).size();
    const std::u16string families = std::u16string(kRepository) + u"\\Families";
    for (const std::u16string& family : ReadKey(families)) {
        for (const std::u16string& full : ReadKey(families + u"\\" + family)) {
            count += ReadKey(families + u"\\" + family + u"\\" + full).size();
        }
    }
    const std::u16string packages = std::u16string(kRepository) + u"\\Packages";
    for (const std::u16string& full : ReadKey(packages)) {
        std::u16string folder;
        ReadKey(packages + u"\\" + full, &folder);
        std::vector<std::byte> manifest;
        ReadWholeFile((folder + u"\\AppxManifest.xml").c_str(), 1U << 20U, manifest);
        count += EnumerateFolder(folder) + manifest.size();
    }
    return count;
}

double Seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double Time(Work work) {
    const double start = Seconds();
    work();
    return Seconds() - start;
}

void Packages(benchmark::State& state) {
    static double smallest = 0;
    StoreMachine machine(state.range(0));
    double bare = std::numeric_limits<double>::max();
    double source = bare;
    for (auto _ : state) {
        machine.Reopen();
        bare = std::min(bare, Time([] { benchmark::DoNotOptimize(ReadBare()); }));
        machine.Reopen();
        AppList packages;
        const double took = Time([&] {
            const Always goOn;
            const CLoadAppx load(goOn, packages);
        });
        if (packages.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("packages are missing");
            return;
        }
        source = std::min(source, took);
        state.SetIterationTime(took);
    }
    const double each = source / static_cast<double>(state.range(0));
    if (state.range(0) == kFewest) smallest = each;
    state.counters["ratio"] = source / bare;
    if (smallest > 0) state.counters["growth"] = each / smallest;
}
BENCHMARK(Packages)->Arg(kFewest)->Arg(500)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
