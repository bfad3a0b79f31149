// Reconciliation compared with a plain one over small random machines, whose few names and folders meet each other in
// every way.
#include <gtest/gtest.h>

#include <random>

#include "tests/appcenter/reconcile_reference.h"
#include "utility/utf.h"

namespace roundup {
namespace {

class RandomWorld {
  public:
    explicit RandomWorld(std::uint32_t seed) : m_random(seed) {}

    World Make() {
        World world;
        for (int i = Number(14); i >= 0; --i) world.uninstalls.push_back(Entry());
        for (int i = Number(6); i > 0; --i) world.installs.push_back(Install());
        return world;
    }

  private:
    using Words = std::vector<std::u16string>;

    // From 0 to below limit.
    int Number(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }
    bool Maybe(int oneIn) { return Number(oneIn) == 0; }
    std::u16string Pick(const Words& words) {
        return words[static_cast<std::size_t>(Number(static_cast<int>(words.size())))];
    }

    std::u16string Key() { return Pick({u"k0", u"K1", u"k1", u"k2", u"K2", u"k3", u"k4", u"k5", u"k6", u"k7"}); }
    std::u16string Name() { return Pick({u"ab", u"AB", u"abc", u"bcd", u"cde", u"xx"}); }
    std::u16string Location() {
        return Pick({u"C:\\a", u"c:\\A", u"C:\\a\\b", u"C:\\ab", u"C:\\a\\b\\c", u"D:\\x", u"D:\\x\\y", u"D:\\"});
    }

    Record Entry() {
        Record entry;
        entry.key = Maybe(12) ? u"" : Key();
        entry.name = Maybe(8) ? u"-" : Name();
        if (Maybe(2)) entry.location = Location();
        if (Maybe(3)) entry.package = Pick({u"C:\\1.msi", u"C:\\2.msi"});
        if (Maybe(2)) entry.code = 1 + Number(4);
        if (Maybe(3)) entry.claims = {1 + Number(5), 1 + Number(5)};
        if (Maybe(4)) entry.parent = Name();
        entry.hidden = Maybe(2);
        if (Maybe(3)) entry.source = Pick({u"E:\\", u"e:\\s", u"E:\\s\\t", u"F:\\"});
        return entry;
    }
    Record Install() {
        Record record = Entry();
        record.key = u"";
        record.parent = u"";
        record.package = Pick({u"C:\\1.MSI", u"C:\\2.msi", u"C:\\5.msp", u"C:\\6.MSP"});
        if (Maybe(2)) record.code = 1 + Number(5);
        return record;
    }

    std::mt19937 m_random;
};

using RandomReconcileTest = ReconcileTest;

std::string Locations(const AppList& apps) {
    std::string text;
    for (const auto& app : apps) text += ToUtf8(static_cast<const CApp&>(*app).pwszInstallLoc.View()) + ";";
    return text;
}

TEST_F(RandomReconcileTest, IndexedPasses_AnswerWhatPlainLoopsDo) {
    std::string all;
    for (std::uint32_t seed = 1; seed <= 600 && !HasFailure(); ++seed) {
        const World world = RandomWorld(seed).Make();
        const std::string forest = Reconciled(world.uninstalls, world.installs);
        AppList expected;
        for (RefPtr<CApp>& app : ReferenceForest(world)) expected.emplace_back(std::move(app));
        EXPECT_EQ(forest, ForestText(expected)) << "seed " << seed;
        EXPECT_EQ(Locations(Manager().Applications()), Locations(expected)) << "seed " << seed;
        all += forest;
    }
    for (const char* reason : {"code:", "name:", "loc:", "src:"}) {
        EXPECT_NE(all.find(reason), all.npos) << reason << " was never tried";
    }
}

}  // namespace
}  // namespace roundup
