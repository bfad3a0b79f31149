// Reconciliation compared with a plain one over small random machines, whose few names and folders meet each other in
// every way.
#include <gtest/gtest.h>

#include <random>

#include "tests/appcenter/reconcile_reference.h"
#include "utility/casemap.h"
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
        for (int i = Number(3); i > 0; --i) {
            world.rules[Upper(Key())] = {
                {Word()}, {Key()}, Maybe(2) ? Words{Word()} : Words{}, Maybe(3) ? Words{Key()} : Words{}};
        }
        for (int i = Number(6); i > 0; --i)
            world.providers[Provider()] = {Name(), Maybe(2) ? Provider() : u"", Maybe(2) ? Provider() : u""};
        for (int i = Number(4); i > 0; --i) world.components.emplace_back(1 + Number(4), Location() + u"\\file");
        for (int i = Number(3); i > 0; --i)
            world.lists[Upper(Key())] = Maybe(2) ? Words{u"k1", u"k3"} : Words{u"K2", u"k1", u"k0"};
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
    std::u16string Name() {
        return Pick({u"ab", u"AB", u"abc", u"bcd", u"cde", u"xx", u"Microsoft Visual C++ 2008 Redistributable x86",
                     u"Microsoft Visual C++ 2008 Redistributable x64",
                     u"Microsoft Visual C++ 2015 Redistributable x86"});
    }
    std::u16string Word() { return Pick({u"AB", u"bc", u"bcd", u"cdef", u"x"}); }
    std::u16string Location() {
        return Pick({u"C:\\a", u"c:\\A", u"C:\\a\\b", u"C:\\ab", u"C:\\a\\b\\c", u"D:\\x", u"D:\\x\\y", u"D:\\"});
    }
    std::u16string Provider() { return Pick({u"P0", u"P1", u"P2", CodeText(1), CodeText(2), CodeText(3)}); }
    static std::u16string Upper(std::u16string text) {
        for (char16_t& c : text) c = ToUpper(c);
        return text;
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
        if (Maybe(2)) entry.version = Pick({u"9.0", u"9.0.1", u"14"});
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

class RandomReconcileTest : public ReconcileTest {
  protected:
    void BuildMachine(const World& world) {
        builder = MachineBuilder();
        for (const auto& [key, rules] : world.rules) builder.HostFile(u"Config\\" + key + u".INC", RuleBytes(rules));
        for (const auto& [key, provider] : world.providers) {
            const std::u16string path = u"HKLM\\SOFTWARE\\Classes\\Installer\\Dependencies\\" + key;
            builder.Text(path, u"DisplayName", provider.display);
            if (!provider.value.empty()) builder.Text(path, u"", provider.value);
            if (!provider.dependent.empty()) builder.Key(path + u"\\Dependents\\" + provider.dependent);
        }
        int number = 100;
        for (const auto& [code, path] : world.components) {
            builder.Text(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1\\Components\\" +
                             FromUtf8(std::to_string(number++)),
                         CodeText(code, GuidForm::Packed), path);
        }
        for (const auto& [key, names] : world.lists) {
            std::string text = "[component]\r\n";
            for (std::size_t i = 0; i < names.size(); ++i)
                text += std::to_string(i + 1) + "=" + ToUtf8(names[i]) + "\r\n";
            builder.HostFile(u"Config\\Compatibility\\" + key + u".ini", text);
        }
    }

  private:
    static std::string RuleBytes(const RuleNames& rules) {
        std::u16string text = u"\xFEFF";
        const auto add = [&text](const char16_t* keyword, const std::vector<std::u16string>& values) {
            for (const std::u16string& value : values) text += keyword + value + u"\r\n";
        };
        add(u"HIDEAPPNAME:", rules.hideNames);
        add(u"HIDEAPPKEY:", rules.hideKeys);
        add(u"SUBAPPNAME:", rules.subNames);
        add(u"SUBAPPKEY:", rules.subKeys);
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
    }
};

std::string Locations(const AppList& apps) {
    std::string text;
    for (const auto& app : apps) text += ToUtf8(static_cast<const CApp&>(*app).pwszInstallLoc.View()) + ";";
    return text;
}

TEST_F(RandomReconcileTest, IndexedPasses_AnswerWhatPlainLoopsDo) {
    std::string all;
    for (std::uint32_t seed = 1; seed <= 600 && !HasFailure(); ++seed) {
        const World world = RandomWorld(seed).Make();
        BuildMachine(world);
        const std::string forest = Reconciled(world.uninstalls, world.installs);
        AppList expected;
        for (RefPtr<CApp>& app : ReferenceForest(world)) expected.emplace_back(std::move(app));
        EXPECT_EQ(forest, ForestText(expected)) << "seed " << seed;
        EXPECT_EQ(Locations(Manager().Applications()), Locations(expected)) << "seed " << seed;
        all += forest;
    }
    for (const char* reason : {"code:", "name:", "loc:", "dep:", "src:", "runtime:", "rule:", "shared:", "list:"}) {
        EXPECT_NE(all.find(reason), all.npos) << reason << " was never tried";
    }
}

}  // namespace
}  // namespace roundup
