// How fast registries are read from their files, and how fast one in memory answers.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"

namespace roundup {

namespace {

constexpr std::uint32_t kView = kKeyRead | kKeyWow64Key64;
constexpr std::u16string_view kUninstall = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

std::string Guid(std::size_t number) {
    char text[48];
    std::snprintf(text, sizeof(text), "{%08zX-0000-4000-8000-%012zX}", number * 2654435761U % 0xFFFFFFFFU, number);
    return text;
}

std::u16string Wide(std::string_view text) { return std::u16string(text.begin(), text.end()); }

// An export with that many Uninstall entries of ten values, as the registry editor or a wineserver would write it.
std::string ExportText(std::size_t entries, bool wine) {
    std::string text = wine ? "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n#arch=win64\n"
                            : "Windows Registry Editor Version 5.00\r\n";
    const std::string end = wine ? "\n" : "\r\n";
    const std::string separator = wine ? "\\\\" : "\\";
    for (std::size_t i = 0; i < entries; ++i) {
        text += end + (wine ? "[" : "[HKEY_LOCAL_MACHINE\\");
        for (const char* part : {"SOFTWARE", "Microsoft", "Windows", "CurrentVersion", "Uninstall"}) {
            text += part + separator;
        }
        text += Guid(i) + (wine ? "] 1795550982" : "]") + end;
        const std::string number = std::to_string(i);
        text += "\"DisplayName\"=\"Application number " + number + "\"" + end;
        text += "\"DisplayVersion\"=\"1.2." + number + "\"" + end;
        text += "\"Publisher\"=\"Publisher of applications\"" + end;
        text += "\"InstallLocation\"=\"C:\\\\Program Files\\\\Application " + number + "\\\\\"" + end;
        text += "\"UninstallString\"=\"MsiExec.exe /X" + Guid(i) + "\"" + end;
        text += "\"InstallDate\"=\"20240131\"" + end;
        text += "\"EstimatedSize\"=dword:0000a1b2" + end;
        text += "\"NoModify\"=dword:00000001" + end;
        text += "\"ModifyPath\"=hex(2):4d,00,73,00,69,00,45,00,78,00,65,00,63,00,2e,00,65,00,78,00,\\" + end;
        text += "  65,00,20,00,2f,00,49,00,7b,00,30,00,7d,00,00,00" + end;
        text += "\"Language\"=dword:00000409" + end;
    }
    return text;
}

std::string Utf16(const std::string& text) {
    std::string wide = "\xFF\xFE";
    for (const char c : text) wide += {c, '\0'};
    return wide;
}

using Parser = SourceStatus (*)(RegistryStore&, std::span<const std::byte>, const std::string&);

void ParseText(benchmark::State& state, Parser parse, const std::string& text) {
    for (auto _ : state) {
        auto store = std::make_unique<RegistryStore>();
        if (const auto status = parse(*store, std::as_bytes(std::span(text)), "bench")) {
            state.SkipWithError(status->Text().c_str());
            return;
        }
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void ParseRegUtf16(benchmark::State& state) {
    ParseText(state, ParseRegText, Utf16(ExportText(static_cast<std::size_t>(state.range(0)), false)));
}
void ParseRegUtf8(benchmark::State& state) {
    ParseText(state, ParseRegText, ExportText(static_cast<std::size_t>(state.range(0)), false));
}
void ParseWine(benchmark::State& state) {
    ParseText(state, ParseWineText, ExportText(static_cast<std::size_t>(state.range(0)), true));
}
BENCHMARK(ParseRegUtf16)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseRegUtf8)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseWine)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// A registry with that many Uninstall entries.
struct FilledRegistry {
    explicit FilledRegistry(std::size_t entries) : registry(store) {
        const std::string text = ExportText(entries, false);
        if (ParseRegText(store, std::as_bytes(std::span(text)), "bench")) std::abort();
        store.Settle();
        registry.OpenKey(kHkeyLocalMachine, kUninstall.data(), kView, uninstall);
        for (std::size_t i = 0; i < entries; ++i) names.push_back(Wide(Guid(i)));
    }

    RegistryStore store;
    RecordedRegistry registry;
    KeyHandle uninstall = 0;
    std::vector<std::u16string> names;
};

FilledRegistry& SharedMachine(std::size_t entries) {
    static std::unique_ptr<FilledRegistry> machine;
    if (machine == nullptr || machine->names.size() != entries) machine = std::make_unique<FilledRegistry>(entries);
    return *machine;
}

void OpenByPath(benchmark::State& state) {
    FilledRegistry& machine = SharedMachine(static_cast<std::size_t>(state.range(0)));
    std::vector<std::u16string> paths;
    for (const std::u16string& name : machine.names) paths.push_back(std::u16string(kUninstall) + u"\\" + name);
    std::size_t at = 0;
    for (auto _ : state) {
        KeyHandle key = 0;
        machine.registry.OpenKey(kHkeyLocalMachine, paths[at = (at + 7919) % paths.size()].c_str(), kView, key);
        machine.registry.CloseKey(key);
    }
}
BENCHMARK(OpenByPath)->Arg(1000)->Arg(10000)->Arg(100000);

void OpenBelowHandle(benchmark::State& state) {
    FilledRegistry& machine = SharedMachine(static_cast<std::size_t>(state.range(0)));
    std::size_t at = 0;
    for (auto _ : state) {
        KeyHandle key = 0;
        machine.registry.OpenKey(machine.uninstall, machine.names[at = (at + 7919) % machine.names.size()].c_str(),
                                 kView, key);
        machine.registry.CloseKey(key);
    }
}
BENCHMARK(OpenBelowHandle)->Arg(1000)->Arg(10000)->Arg(100000);

void QueryOneValue(benchmark::State& state) {
    FilledRegistry& machine = SharedMachine(1000);
    KeyHandle key = 0;
    machine.registry.OpenKey(machine.uninstall, machine.names[7].c_str(), kView, key);
    char16_t buffer[128];
    for (auto _ : state) {
        std::uint32_t type = 0;
        std::uint32_t size = sizeof(buffer);
        benchmark::DoNotOptimize(machine.registry.QueryValue(key, u"UninstallString", type, buffer, size));
    }
    machine.registry.CloseKey(key);
}
BENCHMARK(QueryOneValue)->ThreadRange(1, 2)->UseRealTime();

// Every key and value below Uninstall once: what a load at least costs.
void EnumerateAll(benchmark::State& state) {
    FilledRegistry& machine = SharedMachine(static_cast<std::size_t>(state.range(0)));
    RecordedRegistry& registry = machine.registry;
    char16_t name[256];
    std::byte data[1024];
    for (auto _ : state) {
        for (std::uint32_t i = 0;; ++i) {
            std::uint32_t length = 256;
            if (registry.EnumKey(machine.uninstall, i, name, length) != kErrorSuccess) break;
            KeyHandle key = 0;
            registry.OpenKey(machine.uninstall, name, kView, key);
            for (std::uint32_t value = 0;; ++value) {
                std::uint32_t type = 0;
                std::uint32_t size = sizeof(data);
                length = 256;
                if (registry.EnumValue(key, value, name, length, type, data, size) != kErrorSuccess) break;
            }
            registry.CloseKey(key);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(EnumerateAll)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// A hive is read where it is visited: mounting it, and then all of it. The file is named by ROUNDUP_BENCH_HIVE.
std::size_t VisitAll(IRegistry& registry, KeyHandle parent, const char16_t* path) {
    KeyHandle key = 0;
    if (registry.OpenKey(parent, path, kView, key) != kErrorSuccess) return 0;
    std::size_t keys = 1;
    char16_t name[256];
    for (std::uint32_t i = 0;; ++i) {
        std::uint32_t length = 256;
        if (registry.EnumKey(key, i, name, length) != kErrorSuccess) break;
        keys += VisitAll(registry, key, name);
    }
    registry.CloseKey(key);
    return keys;
}

void ReadHive(benchmark::State& state) {
    const char* const file = std::getenv("ROUNDUP_BENCH_HIVE");
    std::FILE* const stream = file != nullptr ? std::fopen(file, "rb") : nullptr;
    if (stream == nullptr) {
        state.SkipWithError("ROUNDUP_BENCH_HIVE names no hive");
        return;
    }
    std::fseek(stream, 0, SEEK_END);
    const std::int64_t size = std::ftell(stream);
    std::fclose(stream);
    std::size_t keys = 0;
    for (auto _ : state) {
        RegistryStore store;
        RecordedRegistry registry(store);
        HiveState hiveState = HiveState::Whole;
        if (const auto status = MountHive(store, {file}, u"HKEY_LOCAL_MACHINE\\SYSTEM", hiveState)) {
            state.SkipWithError(status->Text().c_str());
            return;
        }
        if (state.range(0) != 0) keys = VisitAll(registry, kHkeyLocalMachine, u"SYSTEM");
    }
    state.SetBytesProcessed(state.iterations() * size);
    state.counters["keys"] = static_cast<double>(keys);
}
BENCHMARK(ReadHive)->ArgName("whole")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace roundup

BENCHMARK_MAIN();
