// Installer packages: what the catalogue reads of one, and all tables of a large one, beside the bare fetch of the
// same rows through the seam, which is the limit. The argument is the number of registry rows, or that of packages on a
// disk. of_texts tells what loaded tables take, as a multiple of the bytes of their texts.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "msianalyzer/imsiproductinfo.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/filetable.h"
#include "msianalyzer/tables/icontable.h"
#include "msianalyzer/tables/propertytable.h"
#include "msianalyzer/tables/registrytable.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/machinebuilder.h"
#include "tests/support/packagewriter.h"
#include "tests/support/tempfolder.h"

namespace {

// Bytes that are allocated now; one thread is all there is. Each block has its size in front.
std::size_t g_allocated = 0;
constexpr std::size_t kSizeField = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t size) {
    auto* const block = static_cast<std::byte*>(std::malloc(size + kSizeField));
    if (block == nullptr) throw std::bad_alloc();
    ::new (block) std::size_t(size);
    g_allocated += size;
    return block + kSizeField;
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    std::byte* const block = static_cast<std::byte*>(memory) - kSizeField;
    g_allocated -= *std::launder(reinterpret_cast<std::size_t*>(block));
    std::free(block);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace roundup {
namespace {

std::string Hash(std::uint32_t number) {
    char text[33];
    std::uint64_t state = number * 0x9E3779B97F4A7C15U + 1;
    for (char* next = text; next != text + 32; ++next) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        *next = "0123456789ABCDEF"[state >> 60U];
    }
    return {text, 32};
}

// Keys, names and values as generators of packages write them. Half as many files as registry rows.
std::string MakePackage(int rows) {
    PackageWriter package;
    package.CodePage(1252).WideReferences();
    package.Table("Property", {"Property s72*", "Value l0"});
    package.Row("Property", {"ProductCode", "{12345678-1234-1234-1234-123456789012}"});
    package.Row("Property", {"ProductName", "Some Tool"}).Row("Property", {"ProductVersion", "1.2.3"});
    package.Row("Property", {"ARPPRODUCTICON", "tool.ico"});
    for (int i = 0; i < 60; ++i) package.Row("Property", {"Property" + std::to_string(i), "value of the property"});
    package.Table("Icon", {"Name s72*", "Data v0"})
        .Row("Icon", {"tool.ico", PackageWriter::Blob{std::string(9000, 'i')}});
    package.Table("Component", {"Component s72*", "ComponentId s38", "Directory_ s72", "Attributes i2", "KeyPath s72"});
    package.Table("File", {"File s72*", "Component_ s72", "FileName l255", "FileSize i4", "Attributes i2"});
    package.Table("Registry", {"Registry s72*", "Root i2", "Key l255", "Name l255", "Value l0", "Component_ s72"});
    for (int i = 0; i < rows; ++i) {
        const auto number = static_cast<std::uint32_t>(i);
        const std::string component = "cmp" + Hash(number / 4);
        if (i % 4 == 0) {
            package.Row("Component", {component, "{12345678-1234-1234-1234-" + std::to_string(100000000000 + i) + "}",
                                      "INSTALLDIR", 0, "fil" + Hash(number)});
        }
        if (i % 2 == 0) {
            package.Row("File", {"fil" + Hash(number), component,
                                 "FILE~" + std::to_string(i) + ".DLL|Some.Assembly.Part" + std::to_string(i) + ".dll",
                                 100000 + i, 512});
        }
        package.Row("Registry",
                    {"reg" + Hash(number), 2, "Software\\Some Maker\\Some Tool\\Part " + std::to_string(i / 10),
                     "Name" + std::to_string(i % 10), "value " + std::to_string(i), component});
    }
    return package.Write();
}

// A machine with one package, on disk.
class PackageMachine {
  public:
    explicit PackageMachine(int rows) {
        MachineBuilder builder;
        builder.File(u"C:\\a.msi", MakePackage(rows));
        m_machine = builder.Build();
        m_scope.emplace(*m_machine);
    }
    IInstaller& Installer() { return m_machine->Installer(); }

  private:
    std::unique_ptr<Machine> m_machine;
    std::optional<MachineScope> m_scope;
};

// A recorded folder with so many cached packages of 300 registry rows, which a few writings share: what differs between
// them is where they lie on the disk.
class PackageFolder {
  public:
    explicit PackageFolder(int packages) {
        m_folder.Write("machine.ini", "");
        std::vector<std::string> writings;
        for (int i = 0; i < 8; ++i) writings.push_back(MakePackage(kRows + 10 * i));
        for (int i = 0; i < packages; ++i) {
            const std::string name = std::to_string(100000 + i) + ".msi";
            m_folder.Write("drives/C/Windows/Installer/" + name, writings[static_cast<std::size_t>(i) % 8]);
            paths.push_back(u"C:\\Windows\\Installer\\" + std::u16string(name.begin(), name.end()));
        }
        OpenOptions options;
        options.folder = m_folder.Text();
        SourceError error{};
        m_machine = OpenRecordedMachine(options, error);
        if (m_machine == nullptr) std::abort();
        m_scope.emplace(*m_machine);
    }
    IInstaller& Installer() { return m_machine->Installer(); }

    std::vector<std::u16string> paths;

  private:
    static constexpr int kRows = 300;

    TempFolder m_folder;
    std::unique_ptr<Machine> m_machine;
    std::optional<MachineScope> m_scope;
};

constexpr const char16_t* kPackage = u"C:\\a.msi";

InstallerHandle Open(IInstaller& installer, const char16_t* path = kPackage) {
    InstallerHandle database = 0;
    if (installer.OpenDatabase(path, database) != kErrorSuccess) std::abort();
    return database;
}

// Fetches all rows and asks for every column by its kind: t, i or s as the query has them. Answers the bytes of the
// texts.
std::uint64_t BareFetch(IInstaller& installer, InstallerHandle database, const char16_t* query, const char* kinds) {
    InstallerHandle view = 0;
    if (installer.OpenView(database, query, view) != kErrorSuccess) return 0;
    if (installer.ExecuteView(view) != kErrorSuccess) std::abort();
    std::uint64_t texts = 0;
    InstallerHandle record = 0;
    std::vector<std::byte> stream;
    while (installer.FetchRecord(view, record) == kErrorSuccess) {
        for (std::uint32_t column = 1; kinds[column - 1] != '\0'; ++column) {
            char16_t buffer[1024];
            std::uint32_t length = 1024;
            if (kinds[column - 1] == 't') {
                (void)installer.GetString(record, column, buffer, length);
                texts += length * sizeof(char16_t);
            }
            if (kinds[column - 1] == 'i') benchmark::DoNotOptimize(installer.GetInteger(record, column));
            if (kinds[column - 1] == 's') {
                stream.resize(installer.GetDataSize(record, column));
                auto size = static_cast<std::uint32_t>(stream.size());
                (void)installer.ReadStream(record, column, stream.data(), size);
            }
            benchmark::DoNotOptimize(buffer);
        }
        installer.CloseHandle(record);
    }
    installer.CloseHandle(view);
    return texts;
}

constexpr const char16_t* kProperties = u"SELECT `Property`, `Value` FROM `Property`";
constexpr const char16_t* kIcons = u"SELECT `Name`, `Data` FROM `Icon`";
constexpr const char16_t* kFiles = u"SELECT `File`, `Component_`, `FileName`, `FileSize`, `Attributes` FROM `File`";
constexpr const char16_t* kComponents =
    u"SELECT `Component`, `ComponentId`, `Directory_`, `Attributes`, `KeyPath` FROM `Component`";
constexpr const char16_t* kRegistry =
    u"SELECT `Registry`, `Root`, `Key`, `Name`, `Value`, `Component_` FROM `Registry`";

void BareProduct(IInstaller& installer, const char16_t* path = kPackage) {
    const InstallerHandle database = Open(installer, path);
    BareFetch(installer, database, kProperties, "tt");
    BareFetch(installer, database, kIcons, "ts");
    installer.CloseHandle(database);
}

void Product(const char16_t* path = kPackage) {
    const ProductInfoPtr info(CreateMSIProductInfo());
    if (Failed(info->Open(path))) std::abort();
    OwnedString text;
    Ignore(info->GetProductName(&text), u"timed alone");
    std::unique_ptr<std::byte[]> icon;
    std::uint32_t size = 0;
    if (Failed(info->GetProductIcon(&icon, &size))) std::abort();
}

std::uint64_t BareTables(IInstaller& installer) {
    const InstallerHandle database = Open(installer);
    const std::uint64_t texts =
        BareFetch(installer, database, kProperties, "tt") + BareFetch(installer, database, kIcons, "ts") +
        BareFetch(installer, database, kFiles, "ttttt") + BareFetch(installer, database, kComponents, "tttit") +
        BareFetch(installer, database, kRegistry, "titttt");
    installer.CloseHandle(database);
    return texts;
}

// Answers the bytes that the tables take while they are there.
std::size_t AllTables(IInstaller& installer) {
    const std::size_t before = g_allocated;
    CPropertyTableAnalyzer properties;
    CIconTableAnalyzer icons;
    CFileTableAnalyzer files;
    CComponentTableAnalyzer components;
    CRegistryTableAnalyzer registry(1);
    CTableAnalyzer* const tables[] = {&properties, &icons, &files, &components, &registry};
    const InstallerHandle database = Open(installer);
    for (CTableAnalyzer* table : tables) {
        if (Failed(table->Analyze(database)) || table->GetRows().IsEmpty()) std::abort();
    }
    installer.CloseHandle(database);
    return g_allocated - before;
}

// Both in turn, by the processor's time: what else the computer does meanwhile does not count.
void Compare(benchmark::State& state, const std::function<void()>& work, const std::function<void()>& bare) {
    double all = 0;
    double limit = 0;
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        work();
        const std::clock_t middle = std::clock();
        bare();
        limit += static_cast<double>(std::clock() - middle) / CLOCKS_PER_SEC;
        const double time = static_cast<double>(middle - start) / CLOCKS_PER_SEC;
        all += time;
        state.SetIterationTime(time);
    }
    state.counters["of_limit"] = all / limit;
    state.counters["per_row_ns"] =
        all * 1e9 / static_cast<double>(state.iterations()) / static_cast<double>(state.range(0));
}

void ReadProduct(benchmark::State& state) {
    PackageMachine machine(static_cast<int>(state.range(0)));
    Compare(
        state, [] { Product(); }, [&] { BareProduct(machine.Installer()); });
}
BENCHMARK(ReadProduct)->Arg(500)->Arg(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);

// All packages of a machine, one after the other.
void ReadProducts(benchmark::State& state) {
    PackageFolder machine(static_cast<int>(state.range(0)));
    const auto each = [&](const auto& work) {
        for (const std::u16string& path : machine.paths) work(path.c_str());
    };
    Compare(
        state, [&] { each([](const char16_t* path) { Product(path); }); },
        [&] { each([&](const char16_t* path) { BareProduct(machine.Installer(), path); }); });
}
BENCHMARK(ReadProducts)->Arg(200)->Arg(2000)->UseManualTime()->Unit(benchmark::kMillisecond);

void LoadTables(benchmark::State& state) {
    PackageMachine machine(static_cast<int>(state.range(0)));
    Compare(
        state, [&] { AllTables(machine.Installer()); }, [&] { BareTables(machine.Installer()); });
    state.counters["of_texts"] =
        static_cast<double>(AllTables(machine.Installer())) / static_cast<double>(BareTables(machine.Installer()));
}
BENCHMARK(LoadTables)->Arg(500)->Arg(5000)->Arg(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The tools of the command line, as whole processes: what another program would do instead.
void ExportByTools(benchmark::State& state) {
    if (std::system("command -v msiinfo > /dev/null") != 0) {
        state.SkipWithError("no msiinfo");
        return;
    }
    const TempFolder folder;
    const std::string file = folder.Text() + "/a.msi";
    const std::string bytes = MakePackage(static_cast<int>(state.range(0)));
    std::FILE* target = std::fopen(file.c_str(), "wb");
    if (target == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), target) != bytes.size()) std::abort();
    std::fclose(target);
    const std::string command = "msiinfo export '" + file + "' Property > /dev/null && cd '" + folder.Text() +
                                "' && msiinfo export -s '" + file + "' Icon > /dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) std::abort();
    }
}
BENCHMARK(ExportByTools)->Arg(500)->Arg(20000)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
