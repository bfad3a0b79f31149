// A whole load through the facade on a machine one of whose operations fails, each in its turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "externfuncinc/externfunc.h"
#include "tests/appcenter/catalogue_support.h"
#include "tests/externfuncinc/scripted.h"
#include "tests/support/faultmachine.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

using Texts = std::vector<std::string>;

// What came of two loads, one after the other; the failing operation is one of the first or of the second.
struct Outcome {
    std::int64_t result[2] = {1, 1};
    Texts keys[2];
    std::int32_t references = 0;  // of the observer
    Texts percents;               // of the first load
};

Outcome LoadTwice(Machine& machine) {
    const MachineScope scope(machine);
    Outcome outcome;
    ScriptedObserver observer;
    const auto facade = RefPtr<IRoundupProc>::Adopt(CreateRoundup());
    if (!facade) return outcome;
    facade->Init();
    facade->SetObserver(&observer);
    for (int load = 0; load < 2; ++load) {
        outcome.result[load] = facade->LoadApps(0);
        const Texts percents = observer.Take();
        if (load == 0) outcome.percents = percents;
        facade->EnumApps();
        outcome.keys[load] = observer.Take();  // names, which are the keys here
    }
    facade->Uninit();
    outcome.references = observer.references;
    return outcome;
}

// True when keys holds nothing but what all does; an update that lost its parent's name stands by itself. The order may
// differ: what two views show stands where the first of them that could be read has it.
bool IsPartOf(Texts keys, Texts all) {
    all.emplace_back("gamma");
    std::ranges::sort(keys);
    std::ranges::sort(all);
    return std::ranges::includes(all, keys);
}

class LoadFaultsTest : public CatalogueTest {
  protected:
    // Few entries, but between them every step that asks the machine: an update, a product with codes, locations in
    // files, in folders and behind variables, command lines, an icon file, the icon of a program.
    void SetUp() override {
        const std::u16string_view braced = u"{00020D75-0000-0000-C000-000000000046}";
        Entry(kMachineKey, u"alpha")
            .File(u"C:\\Alpha\\alpha.exe", "MZ")
            .File(u"C:\\Alpha\\un.exe", "MZ")
            .Text(Under(kMachineKey, u"alpha"), u"UninstallString", u"C:\\Alpha\\un.exe /S")
            .Text(Under(kMachineKey, u"alpha"), u"DisplayIcon", u"C:\\Alpha\\alpha.exe,0");
        Entry(kMachineKey, braced)
            .Text(Under(kMachineKey, braced), u"InstallLocation", u"%ProgramFiles%\\Beta\\")
            .Text(Under(kMachineKey, braced), u"LocalPackage", u"C:\\Windows\\Installer\\1.msi")
            .MultiText(Under(kMachineKey, braced), u"ProductCodes", {std::u16string(braced)});
        Entry(kMachine32Key, u"gamma")
            .File(u"C:\\Gamma\\gamma.ico", "icon bytes")
            .Text(Under(kMachine32Key, u"gamma"), u"ParentDisplayName", u"alpha")
            .Text(Under(kMachine32Key, u"gamma"), u"DisplayIcon", u"\"C:\\Gamma\\gamma.ico\"");
        Entry(kUserKey, u"delta").Dword(Under(kUserKey, u"delta"), u"EstimatedSize", 12);
    }

    // Fails the operations of an area one by one, until the load ends before the failing one would come.
    template <class Check>
    void FailEach(Area area, Win32Error error, Check check) {
        constexpr std::uint64_t kMost = 5000;
        for (std::uint64_t n = 1;; ++n) {
            ASSERT_LE(n, kMost) << "operations without end";
            FaultInjectingMachine machine(builder.Build());
            machine.FailOperation(area, n, error);
            SCOPED_TRACE(FormatNumbers(area, n, error));
            const Outcome outcome = LoadTwice(machine);
            EXPECT_EQ(machine.HandlesHeld(), 0) << "a handle was kept or closed twice";
            EXPECT_EQ(outcome.references, 1) << "of the observer";
            check(outcome);
            if (!machine.HasFired() || HasFailure()) break;
        }
    }

    Outcome WithoutFailure() {
        FaultInjectingMachine machine(builder.Build());
        return LoadTwice(machine);
    }

  private:
    static std::string FormatNumbers(Area area, std::uint64_t n, Win32Error error) {
        return "area " + std::to_string(static_cast<int>(area)) + ", operation " + std::to_string(n) + ", error " +
               std::to_string(error);
    }
};

// Error 5 at an open is asked again for reading, 18 and 259 are ends, 234 is what a grown value answers.
TEST_F(LoadFaultsTest, RegistryFailure_CostsWhatItHitsAndNoOtherEntry) {
    const Outcome whole = WithoutFailure();
    ASSERT_EQ(whole.keys[0], whole.keys[1]);
    ASSERT_EQ(whole.keys[0].size(), 3U);
    for (const Win32Error error : {kErrorAccessDenied, kErrorFileNotFound, kErrorNoMoreFiles, kErrorMoreData,
                                   kErrorNoMoreItems, kErrorNotEnoughMemory}) {
        std::size_t fewest = whole.keys[0].size();
        FailEach(Area::Registry, error, [&](const Outcome& outcome) {
            for (int load = 0; load < 2; ++load) {
                EXPECT_EQ(outcome.result[load], 0);
                fewest = std::min(fewest, outcome.keys[load].size());
            }
            EXPECT_EQ(outcome.percents, whole.percents) << "the load goes on";
            const Texts& hit = outcome.keys[0] != whole.keys[0] ? outcome.keys[0] : outcome.keys[1];
            const Texts& other = &hit == &outcome.keys[0] ? outcome.keys[1] : outcome.keys[0];
            EXPECT_EQ(other, whole.keys[0]) << "one load is not hit, and is complete";
            EXPECT_TRUE(IsPartOf(hit, whole.keys[0])) << testing::PrintToString(hit);
        });
        EXPECT_LT(fewest, whole.keys[0].size()) << "no failure reached a source";
    }
}

TEST_F(LoadFaultsTest, FailureOfAnotherArea_CostsNoEntry) {
    const Outcome whole = WithoutFailure();
    ASSERT_EQ(whole.keys[0].size(), 3U);
    for (const Area area : {Area::Files, Area::Profile, Area::Shell, Area::Installer, Area::Processes, Area::Security,
                            Area::System, Area::ClosedLibraries}) {
        for (const Win32Error error : {kErrorAccessDenied, kErrorNotEnoughMemory}) {
            FailEach(area, error, [&](const Outcome& outcome) {
                for (int load = 0; load < 2; ++load) {
                    EXPECT_EQ(outcome.result[load], 0);
                    EXPECT_EQ(outcome.keys[load], whole.keys[0]);
                }
                EXPECT_EQ(outcome.percents, whole.percents);
            });
        }
    }
}

}  // namespace
}  // namespace roundup
