// The analysis of a product, beside the load of its tables and the bare reads of what it reports: one question for each
// file, one open and one query for each registry value, one path for each component. The argument is the number of
// files; there are twice as many registry rows, a fifth as many components, and 50 features.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "msianalyzer/installedcomponents.h"
#include "msianalyzer/msianalyzer.h"
#include "tests/support/machinebuilder.h"
#include "tests/support/productpackage.h"
#include "utility/iremoverepeatreg.h"
#include "utility/kvobject.h"

namespace roundup {
namespace {

constexpr const char* kCode = "{11111111-2222-3333-4444-555555555555}";
constexpr const char16_t* kProduct = u"{11111111-2222-3333-4444-555555555555}";
constexpr int kFeatures = 50;
constexpr int kFilesOfComponent = 5;
constexpr int kRowsOfComponent = 10;

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

// What is bought by being asked for each item alone.
class NoFilter final : public CKvObject<IRemoveRepeatReg> {
  public:
    std::int32_t IsKeySeen(const std::uint32_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsValueSeen(const std::uint32_t*, const char16_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsItemSeen(std::uint32_t, const char16_t*, bool, bool) override { return 0; }
    std::int32_t IsDirectorySeen(const char16_t*) override { return 0; }
};

// A machine with the product, and what is to be found of it there.
class ProductMachine {
  public:
    explicit ProductMachine(int fileCount) {
        m_package.Row("Property", {"ProductCode", kCode}).Row("Directory", {"TARGETDIR", {}, "SourceDir"});
        m_package.Row("Directory", {"INSTALLDIR", "ProgramFilesFolder", "Tool"});
        m_package.Row("Directory", {"ProgramFilesFolder", "TARGETDIR", "."});
        for (int i = 0; i < kFeatures; ++i) m_package.Row("Feature", {"Feature" + std::to_string(i)});
        for (int i = 0; i < fileCount / kFilesOfComponent; ++i) AddComponent(i);
        m_package.Row("InstallExecuteSequence", {"InstallFiles", {}, 1});
        m_package.Row("InstallExecuteSequence", {"WriteRegistryValues", {}, 2});
        m_builder.File(u"C:\\a.msi", m_package.Write());
        m_machine = m_builder.Build();
        m_scope.emplace(*m_machine);
    }

    struct Value {
        std::u16string key;
        std::u16string name;
    };
    std::vector<std::u16string> components;
    std::vector<std::u16string> files;
    std::vector<Value> values;

  private:
    void AddComponent(int number) {
        const std::string key = "Component" + std::to_string(number);
        const std::string id = "{12345678-1234-1234-1234-" + std::to_string(100000000000 + number) + "}";
        const std::string directory = "DIR" + std::to_string(number % 100);
        if (number < 100) m_package.Row("Directory", {directory, "INSTALLDIR", "Part " + std::to_string(number)});
        m_package.Row("Component", {key, id, directory, 0, "File" + key});
        m_package.Row("FeatureComponents", {"Feature" + std::to_string(number % kFeatures), key});
        components.push_back(Wide(id));
        const std::string folder = "C:\\Program Files (x86)\\Tool\\Part " + std::to_string(number % 100) + "\\";
        for (int i = 0; i < kFilesOfComponent; ++i) {
            const std::string name = "Some.Assembly." + std::to_string(number) + "." + std::to_string(i) + ".dll";
            files.push_back(Wide(folder + name));
            m_builder.File(files.back(), "x");
            if (i == 0) InstallComponent(m_builder, kProduct, components.back(), files.back());
            m_package.Row("File", {"File" + key + "." + std::to_string(i), key, name, 100, 0});
        }
        for (int i = 0; i < kRowsOfComponent; ++i) {
            const std::string path = "Software\\Some Maker\\Some Tool\\Part " + std::to_string(number);
            values.push_back({Wide(path), Wide("Name" + std::to_string(i))});
            m_builder.Text(u"HKLM\\SOFTWARE\\WOW6432Node" + values.back().key.substr(8), values.back().name,
                           u"C:\\some value");
            m_package.Row("Registry", {"reg" + key + std::to_string(i), 2, path, "Name" + std::to_string(i), "x", key});
        }
    }

    MachineBuilder m_builder;
    PackageWriter m_package = ProductTables();
    std::unique_ptr<Machine> m_machine;
    std::optional<MachineScope> m_scope;
};

struct Count {
    std::size_t files = 0;
    std::size_t data = 0;
};

ResultCode OnItem(void* context, const char16_t* item, std::uint64_t, std::uint32_t type) {
    auto& count = *static_cast<Count*>(context);
    if (type == ItemType::kFile) ++count.files;
    if (type == ItemType::kRegistry) ++count.data, (void)CurrentMachine().Files().Delete(item);
    return kSuccess;
}

void Analyze(NoFilter& filter, Count& count) {
    CMSIAnalyzer analyzer;
    if (Failed(analyzer.Open(u"C:\\a.msi", nullptr, &OnItem, &count, &filter))) std::abort();
    if (Failed(analyzer.Analyze())) std::abort();
}

void LoadTables(NoFilter& filter, Count& count) {
    CMSIAnalyzer analyzer;
    if (Failed(analyzer.Open(u"C:\\a.msi", nullptr, &OnItem, &count, &filter))) std::abort();
    if (Failed(analyzer.LoadTables())) std::abort();
}

void ReadBare(const ProductMachine& product) {
    Machine& machine = CurrentMachine();
    for (const std::u16string& component : product.components) {
        char16_t path[260];
        std::uint32_t length = 260;
        if (machine.Installer().GetComponentPath(kProduct, component.c_str(), path, length) != kInstallStateLocal)
            std::abort();
    }
    for (const std::u16string& file : product.files) {
        if (machine.Files().GetAttributes(file.c_str()) == kInvalidAttributes) std::abort();
    }
    IRegistry& registry = machine.Registry();
    for (const ProductMachine::Value& value : product.values) {
        KeyHandle key = 0;
        std::uint32_t type = 0;
        char16_t data[260];
        std::uint32_t size = sizeof data;
        if (registry.OpenKey(kHkeyLocalMachine, value.key.c_str(), kKeyRead | kKeyWow64Key32, key) != kErrorSuccess)
            std::abort();
        if (registry.QueryValue(key, value.name.c_str(), type, data, size) != kErrorSuccess) std::abort();
        registry.CloseKey(key);
    }
}

// In turn, by the processor's time: what else the computer does meanwhile does not count.
void AnalyzeProduct(benchmark::State& state) {
    const ProductMachine product(static_cast<int>(state.range(0)));
    const RefPtr<NoFilter> filter = RefPtr<NoFilter>::Adopt(new NoFilter);
    (void)GetInstalledComponents();
    double all = 0;
    double limit = 0;
    for (auto _ : state) {
        Count count;
        const std::clock_t start = std::clock();
        Analyze(*filter, count);
        const std::clock_t middle = std::clock();
        LoadTables(*filter, count);
        ReadBare(product);
        limit += static_cast<double>(std::clock() - middle) / CLOCKS_PER_SEC;
        const double time = static_cast<double>(middle - start) / CLOCKS_PER_SEC;
        all += time;
        state.SetIterationTime(time);
        if (count.files != product.files.size() || count.data != product.components.size()) std::abort();
    }
    state.counters["of_limit"] = all / limit;
    state.counters["per_file_ns"] =
        all * 1e9 / static_cast<double>(state.iterations()) / static_cast<double>(state.range(0));
}
BENCHMARK(AnalyzeProduct)->Arg(1000)->Arg(10000)->Arg(40000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
