// A whole load: progress, cancel, order, and what each source adds.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "tests/appcenter/catalogue_support.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

using Percents = std::vector<std::uint32_t>;
using Texts = std::vector<std::string>;

const Percents kPercents64{10, 20, 40, 50, 60, 70, 80, 90, 95};
const Percents kPercents32{10, 30, 50, 70, 80, 90, 95};

class LoadTest : public CatalogueTest {
  protected:
    void AddEntries() {
        Entry(kMachineKey, u"m64");
        Entry(kMachine32Key, u"m32");
        Entry(kUserKey, u"user");
    }
};

TEST_F(LoadTest, EveryPercent_IsToldInOrderAndCancelsThere) {
    for (const std::uint16_t architecture : {kArchitectureAmd64, kArchitectureIntel}) {
        const Percents& all = architecture == kArchitectureAmd64 ? kPercents64 : kPercents32;
        builder = MachineBuilder();
        builder.Architecture(architecture);
        AddEntries();
        Start();
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        LoadRun run;
        EXPECT_TRUE(Succeeded(run.Load(*manager)));
        EXPECT_EQ(run.percents, all);
        const std::uint32_t loaded = manager->GetCount();
        EXPECT_GT(loaded, 0U);
        for (std::size_t i = 0; i < all.size(); ++i) {
            run.cancelAt = all[i];
            EXPECT_EQ(Small(run.Load(*manager)), SmallCode::Cancelled);
            EXPECT_EQ(run.percents, Percents(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i) + 1));
            EXPECT_EQ(manager->GetCount(), all[i] < 80 ? 0 : loaded) << "cancelled at " << all[i];
            EXPECT_EQ(manager->IsContinue(), 1) << "cancel leaves the go-on flag";
        }
    }
}

// The 32-bit sources stand before the 64-bit ones, and both views of the user's key show the same entries.
TEST_F(LoadTest, Sources_JoinInTheOrderOfTheTableWithTheirFlags) {
    AddEntries();
    Entry(kMachineKey, u"a");
    EXPECT_EQ(Keys(Load().Applications()), (Texts{"m32/0", "user/301", "a/201", "m64/201"}))
        << "what both views show stands where it came first";
    builder.Architecture(kArchitectureIntel);
    EXPECT_EQ(Keys(Load().Applications()), (Texts{"a/0", "m64/0", "user/100"})) << "one view";
}

TEST_F(LoadTest, Result_IsTheSameWithEveryNumberOfProcessors) {
    for (int i = 0; i < 60; ++i) {
        const std::u16string name = FormatText(u"entry%d", i);
        Entry(i % 3 == 0 ? kMachineKey : i % 3 == 1 ? kMachine32Key : kUserKey, name);
    }
    const Texts expected = Keys(Load().Applications());
    ASSERT_EQ(expected.size(), 60U);
    for (const std::uint32_t processors : {1U, 2U, 64U, 0xFFFFFFFFU}) {
        builder.Processors(processors);
        for (int run = 0; run < 5; ++run) EXPECT_EQ(Keys(Load().Applications()), expected) << processors;
    }
}

// What the loads of one process share must bear both at once, while other threads ask.
TEST_F(LoadTest, TwoManagersAtOnce_BothFindEverything) {
    AddEntries();
    for (int i = 0; i < 40; ++i) {
        const std::u16string name = FormatText(u"entry%d", i);
        Entry(kMachineKey, name)
            .File(FormatText(u"C:\\App%d\\app.exe", i), "MZ")
            .Text(Under(kMachineKey, name), u"DisplayIcon", FormatText(u"C:\\App%d\\app.exe,0", i));
    }
    const Texts expected = Keys(Load().Applications());
    const RefPtr<CAppManager> managers[] = {RefPtr<CAppManager>::Adopt(new CAppManager),
                                            RefPtr<CAppManager>::Adopt(new CAppManager)};
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (const auto& manager : managers) {
            threads.emplace_back([&manager] {
                LoadRun run;
                EXPECT_TRUE(Succeeded(run.Load(*manager)));
                EXPECT_EQ(run.percents, kPercents64);
            });
        }
        for (const auto& manager : managers) {
            threads.emplace_back([&manager] {
                manager->IsContinue();
                const std::uint32_t count = manager->GetCount();
                EXPECT_TRUE(count == 0 || count == 43) << "never a part of a load";
            });
        }
        for (std::thread& thread : threads) thread.join();
        for (const auto& manager : managers) EXPECT_EQ(Keys(manager->Applications()), expected);
    }
}

// Stop may come from any thread at any moment: the load ends with a beginning of what there is.
TEST_F(LoadTest, StopFromAnotherThread_LeavesWholeApplications) {
    for (int i = 0; i < 200; ++i) Entry(kMachineKey, FormatText(u"entry%d", i));
    const Texts all = Keys(Load().Applications());
    for (int round = 0; round < 10; ++round) {
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        std::thread stopper([&manager] { manager->Stop(); });
        LoadRun run;
        EXPECT_TRUE(Succeeded(run.Load(*manager)));
        stopper.join();
        const Texts found = Keys(manager->Applications());
        ASSERT_LE(found.size(), all.size());
        EXPECT_TRUE(std::equal(found.begin(), found.end(), all.begin()));
    }
}

TEST_F(LoadTest, DeniedUninstallKey_AddsNothingAndLoadGoesOn) {
    AddEntries();
    builder.DenyKey(kMachineKey.substr(0, kMachineKey.size() - 1));
    EXPECT_EQ(Keys(Load().Applications()), (Texts{"m32/0", "user/301"}));
}

TEST_F(LoadTest, DeniedEntry_EndsItsSourceAndKeepsWhatWasFound) {
    AddEntries();
    for (const auto* name : {u"a", u"b", u"c"}) Entry(kMachineKey, name);
    builder.DenyKey(Under(kMachineKey, u"b"));
    EXPECT_EQ(Keys(Load().Applications()), (Texts{"m32/0", "user/301", "a/201"}));
}

// A name that is longer than any fixed buffer, one that is no valid text, and one that no zero-terminated path
// reaches: the last cannot be opened and ends its source.
TEST_F(LoadTest, OddKeyNames_AreTakenWholeOrEndTheirSource) {
    const std::u16string longName(255, u'l');
    Entry(kMachineKey, u"a");
    Entry(kMachineKey, longName);
    Entry(kMachineKey, u"x\xD800");
    EXPECT_EQ(Load().GetCount(), 3U);
    EXPECT_EQ(AppAt(Load(), 1).pwszKeyString.View(), longName);
    EXPECT_EQ(AppAt(Load(), 2).pwszKeyString.View(), u"x\xD800");
    Entry(kMachineKey, std::u16string_view(u"b\0c", 3));
    EXPECT_EQ(Keys(Load().Applications()), (Texts{"a/201"}));
}

TEST_F(LoadTest, SecondLoad_ReleasesTheFormerObjectsAndStartsAnew) {
    Entry(kMachineKey, u"a");
    CAppManager& manager = Load();
    IApp* held = nullptr;
    ASSERT_TRUE(Succeeded(manager.GetApp(&held, 0)));
    LoadRun run;
    run.cancelAt = 10;
    EXPECT_EQ(Small(run.Load(manager)), SmallCode::Cancelled);
    EXPECT_EQ(manager.GetCount(), 0U);
    EXPECT_EQ(std::u16string_view(held->GetName()), u"a") << "an object handed out stays";
    EXPECT_EQ(held->Release(), 0U);
}

TEST_F(LoadTest, CacheThatCannotBeRead_TellsNinetyFiveAlone) {
    Entry(kMachineKey, u"a");
    CAppManager& manager = Load();
    LoadRun run;
    EXPECT_TRUE(Succeeded(run.Load(manager, true)));
    EXPECT_EQ(run.percents, Percents{95});
    run.cancelAt = 95;
    EXPECT_EQ(Small(run.Load(manager, true)), SmallCode::Cancelled);
    EXPECT_EQ(manager.GetCount(), 0U);
}

}  // namespace
}  // namespace roundup
