// How much reconciliation costs beside the reading of what it reconciles.
//
// A machine in memory has so many Uninstall entries in both views of HKEY_LOCAL_MACHINE, in shares as machines have
// them: of a hundred, fifteen are in both views, nine are updates that name a parent, eight are hidden in the folder of
// another, two are hidden with no owner, four claim codes, and one in fifty has rule files. Windows Installer has a
// record for every third, a patch for every twentieth, a provider key for every fortieth; the books of its components
// tell of every tenth.
//
//     each_ns    time of the reconciliation for each entry of both lists, of its thread
//     growth     that to the same at the smallest size; at most 1.5 is wanted
//     read_ns    time of the two sources' walks for each entry, of their threads: what the memory itself costs shows
//                here too, since they do the same at every size
//     ratio      reconciliation in a whole load, to all the rest of that load; below 1 is wanted
#include "appcenter/appeunm/reconcile.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <memory>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appeunm/uninstallsource.h"
#include "tests/support/machinebuilder.h"
#include "utility/formattext.h"
#include "utility/guid.h"

namespace roundup {
namespace {

constexpr std::int64_t kFewest = 1000;
constexpr const char16_t* kRoot = u"HKLM\\SOFTWARE\\";
constexpr const char16_t* kUninstall = u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr const char16_t* kUserData = u"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\";
constexpr const char16_t* kDependencies = u"Classes\\Installer\\Dependencies\\";

Guid CodeOf(std::uint32_t number) {
    return ParseGuid(FormatText(u"{%08X-5E1F-4C0D-9A66-0123456789AB}", number * 2654435761U), GuidForm::Braced);
}
std::u16string CodeText(std::uint32_t number) { return std::u16string(FormatGuid(CodeOf(number), GuidForm::Braced)); }
std::u16string NameOf(std::uint32_t number) { return FormatText(u"Otter Notes %u", number); }
std::u16string FolderOf(std::uint32_t number) {
    return FormatText(u"C:\\Program Files\\Otter Works\\Otter Notes %u", number);
}
std::string RuleBytes(std::u16string_view text) {
    const std::u16string marked = u"\xFEFF" + std::u16string(text);
    return {reinterpret_cast<const char*>(marked.data()), marked.size() * sizeof(char16_t)};
}

bool IsUpdate(std::uint32_t i) { return i % 11 == 5; }
bool IsHidden(std::uint32_t i) { return i % 10 == 7; }

// What an application has that others belong to. The one in front of a hidden entry or an update owns it.
void AddOwner(MachineBuilder& builder, const std::u16string& key, std::uint32_t i) {
    builder.Text(key, u"InstallLocation", FolderOf(i)).Folder(FolderOf(i));
    if (i % 25 == 0) builder.MultiText(key, u"ProductCodes", {CodeText(i + 7), CodeText(i + 1000000)});
    if (i % 50 == 1) {
        builder.HostFile(u"Config\\" + CodeText(i) + u".INC",
                         RuleBytes(FormatText(u"HIDEAPPNAME:Otter Part %u\r\nSUBAPPKEY:%s\r\nFILE:[]\\x.dat\r\n", i,
                                              CodeText(i + 2))));
    }
}

void AddEntry(MachineBuilder& builder, const std::u16string& view, std::uint32_t i) {
    const std::u16string key = kRoot + view + kUninstall + CodeText(i);
    builder.Text(key, u"DisplayName", IsHidden(i) ? FormatText(u"Otter Part %u", i) : NameOf(i))
        .Text(key, u"DisplayVersion", FormatText(u"%u.4.1024", i % 30))
        .Text(key, u"Publisher", u"Otter Works International")
        .Text(key, u"InstallDate", u"20240131")
        .Text(key, u"UninstallString", u"MsiExec.exe /X" + CodeText(i))
        .Dword(key, u"EstimatedSize", 20480)
        .Text(key, u"URLInfoAbout", u"https://www.example.com/notes");
    if (IsHidden(i)) {
        builder.Dword(key, u"SystemComponent", 1)
            .Text(key, u"InstallLocation", i % 50 == 7 ? FormatText(u"D:\\parts\\%u", i) : FolderOf(i - 1) + u"\\part");
    } else if (IsUpdate(i)) {
        builder.Text(key, u"ParentDisplayName", NameOf(i - 1)).Text(key, u"LocalPackage", u"C:\\x.msi");
    } else {
        AddOwner(builder, key, i);
    }
    if (i % 40 == 3) builder.Text(kRoot + (kDependencies + CodeText(i)), u"DisplayName", NameOf(i));
    if (i % 10 == 7) {
        builder.Text(kRoot + (kUserData + FormatText(u"Components\\%032X", i)),
                     GuidText(CodeOf(i), GuidForm::Packed).View(), FolderOf(i - 1) + u"\\shared.dll");
    }
}

std::unique_ptr<Machine> MakeMachine(std::uint32_t entries) {
    MachineBuilder builder;
    for (std::uint32_t i = 0; i < entries; ++i) {
        AddEntry(builder, u"", i);
        if (i % 7 == 3) AddEntry(builder, u"Wow6432Node\\", i);
    }
    builder.HostFile(u"Config\\AppsIniEx.ini", "[AppName]\r\nAdobe=\r\nMidnight=\r\n");
    return builder.Build();
}

void AddRecord(AppList& installs, std::uint32_t code, const std::u16string& package) {
    auto app = RefPtr<CApp>::Adopt(new CApp);
    app->ProductCode = CodeOf(code);
    AssignString(app->pwszMsiPath, package);
    AssignString(app->pwszName, NameOf(code));
    AssignString(app->pwszInstallSource, FormatText(u"D:\\media\\%u\\", code % 1000));
    installs.emplace_back(std::move(app));
}

AppList MakeInstalls(std::uint32_t entries) {
    AppList installs;
    for (std::uint32_t i = 0; i < entries; i += 3) {
        AddRecord(installs, i, FormatText(u"C:\\Windows\\Installer\\%x.msi", i));
        if (i % 60 == 0) AddRecord(installs, i + 1000000, FormatText(u"C:\\Windows\\Installer\\%x.msp", i));
    }
    return installs;
}

double CpuSeconds() {
    std::timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Hears a source's thread ask before each entry and behind the last one, and takes its time there.
class WalkClock final : public IContinue {
  public:
    std::uint8_t IsContinue() const noexcept override {
        const double now = CpuSeconds();
        if (m_start == 0) m_start = now;
        m_end = now;
        return 1;
    }
    double Seconds() const noexcept { return m_end - m_start; }

  private:
    mutable double m_start = 0;
    mutable double m_end = 0;
};

// Adds the entries of one view; answers the seconds that its source's thread has worked.
double ReadView(bool view64, AppList& uninstalls) {
    AppList list;
    const WalkClock clock;
    { const UninstallEnumerator source(clock, list, kHkeyLocalMachine, view64); }
    std::ranges::move(list, std::back_inserter(uninstalls));
    return clock.Seconds();
}

// A whole load, whose callback is told when reconciliation begins and when it has ended.
struct LoadClock {
    double before = 0;
    double after = 0;
    static std::uint8_t OnPercent(std::uint32_t percent, void* context) {
        auto& clock = *static_cast<LoadClock*>(context);
        if (percent == 70) clock.before = CpuSeconds();
        if (percent == 80) clock.after = CpuSeconds();
        return 1;
    }
};

double LoadRatio(CAppManager& manager) {
    LoadClock clock;
    const std::clock_t start = std::clock();
    Ignore(manager.LoadAppEx(&LoadClock::OnPercent, &clock, false), u"nothing stops it");
    const double all = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const double reconciled = clock.after - clock.before;
    return reconciled / (all - reconciled);
}

void ReconcileLists(benchmark::State& state) {
    static double atFewest = 0;
    const auto entries = static_cast<std::uint32_t>(state.range(0));
    const std::unique_ptr<Machine> machine = MakeMachine(entries);
    const MachineScope scope(*machine);
    double read = std::numeric_limits<double>::max();
    double work = read;
    double ratio = read;
    std::size_t count = 0;
    std::size_t left = 0;
    for (auto _ : state) {
        AppList uninstalls;
        AppList installs = MakeInstalls(entries);
        read = std::min(read, ReadView(false, uninstalls) + ReadView(true, uninstalls));
        count = uninstalls.size() + installs.size();
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        // A manager goes on from its first load, also one that is cancelled at once.
        const auto cancel = [](std::uint32_t, void*) -> std::uint8_t { return 0; };
        Ignore(manager->LoadAppEx(cancel, nullptr, false), u"cancelled");
        const double start = CpuSeconds();
        Reconcile(*manager, installs, uninstalls);
        work = std::min(work, CpuSeconds() - start);
        left = manager->Applications().size();
        manager->Applications().clear();
        ratio = std::min(ratio, LoadRatio(*manager));
    }
    const double each = work * 1e9 / static_cast<double>(count);
    if (entries == kFewest) atFewest = each;
    state.counters["each_ns"] = each;
    state.counters["growth"] = each / atFewest;
    state.counters["read_ns"] = read * 1e9 / static_cast<double>(count);
    state.counters["ratio"] = ratio;
    state.counters["left"] = static_cast<double>(left);
}

BENCHMARK(ReconcileLists)->Arg(kFewest)->Iterations(20);
BENCHMARK(ReconcileLists)->Arg(10000)->Iterations(5);
BENCHMARK(ReconcileLists)->Arg(100000)->Iterations(3);

}  // namespace
}  // namespace roundup

BENCHMARK_MAIN();
