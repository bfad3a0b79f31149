#include <cstring>

#include "appcenter/app/app.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

// What two records of one application are compared by.
struct Identity {
    std::u16string_view typeDes;
    std::uint8_t code;  // 0 is the nil code
    std::u16string_view name;
    std::u16string_view key;
};

class AppIdentityTest : public MachineTest {
  protected:
    static RefPtr<CApp> AppOf(const Identity& identity) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszTypeDes = OwnedString(identity.typeDes);
        app->ProductCode.bytes[3] = identity.code;
        app->pwszName = OwnedString(identity.name);
        app->pwszKeyString = OwnedString(identity.key);
        return app;
    }
};

TEST_F(AppIdentityTest, IsSame_AnyFactThatBothHaveDecides) {
    Start();
    const struct {
        const char* what;
        Identity app;
        Identity record;
        bool same;
    } cases[] = {
        {"suite alone, all else differs", {u"OFFICE_2016", 1, u"a", u"k"}, {u"office_2016", 2, u"b", u"l"}, true},
        {"suite empty on one side", {u"", 1, u"a", u"k"}, {u"OFFICE_2016", 2, u"b", u"l"}, false},
        {"suites both empty", {u"", 1, u"a", u"k"}, {u"", 2, u"b", u"l"}, false},
        {"code alone", {u"X", 1, u"a", u"k"}, {u"Y", 1, u"b", u"l"}, true},
        {"nil codes never match", {u"", 0, u"a", u"k"}, {u"", 0, u"b", u"l"}, false},
        {"name alone, ignoring case", {u"X", 1, u"T\u00C4ST", u"k"}, {u"Y", 2, u"t\u00E4st", u"l"}, true},
        {"empty names never match", {u"", 1, u"", u"k"}, {u"", 2, u"", u"l"}, false},
        {"key alone, ignoring case", {u"X", 1, u"a", u"{Key}"}, {u"Y", 2, u"b", u"{KEY}"}, true},
        {"empty keys never match", {u"", 1, u"a", u""}, {u"", 2, u"b", u""}, false},
        {"a prefix is another name", {u"", 1, u"Tool", u"k"}, {u"", 2, u"Tool 2", u"l"}, false},
    };
    for (const auto& c : cases) {
        AppRecordEx record;
        AppOf(c.record)->FillAppInfo(record);
        EXPECT_EQ(AppOf(c.app)->IsSame(record), c.same) << c.what;
    }
}

// Only a whole walk finds the match in the last sub-application of the last.
TEST_F(AppIdentityTest, IsSameOrHolds_LooksBelow) {
    Start();
    RefPtr<CApp> top = AppOf({u"", 1, u"top", u"top"});
    RefPtr<CApp> first = AppOf({u"", 2, u"first", u"first"});
    RefPtr<CApp> second = AppOf({u"", 3, u"second", u"second"});
    second->SubApps.push_back(AppOf({u"", 4, u"part", u"part"}));
    top->SubApps.push_back(std::move(first));
    top->SubApps.push_back(std::move(second));
    AppRecordEx record;
    AppOf({u"", 0, u"", u"PART"})->FillAppInfo(record);
    EXPECT_TRUE(top->IsSameOrHolds(record));
    EXPECT_FALSE(top->IsSame(record));
    AppOf({u"", 9, u"nothing", u"nothing"})->FillAppInfo(record);
    EXPECT_FALSE(top->IsSameOrHolds(record));
}

// Every text that merging completes, and some that it must leave alone.
TEST_F(AppIdentityTest, MergeFrom_FillsWhatIsEmptyAndKeepsTheRest) {
    const struct {
        OwnedString CApp::*field;
        bool merged;
    } fields[] = {
        {&CApp::pwszName, true},
        {&CApp::pwszKeyString, true},
        {&CApp::pwszInstallLoc, true},
        {&CApp::pwszMsiPath, true},
        {&CApp::pwszInstallSource, true},
        {&CApp::pwszVersion, true},
        {&CApp::pwszType, true},
        {&CApp::pwszTypeDes, true},
        {&CApp::pwszUnInstallProgram, true},
        {&CApp::pwszIconProgram, true},
        {&CApp::pwszPublisher, false},
        {&CApp::pwszInstallDate, false},
        {&CApp::pwszParentKeyName, false},
        {&CApp::pwszParentDisplayName, false},
        {&CApp::pwszRealInstallLoc, false},
        {&CApp::pwszOriginalInstallLoc, false},
    };
    int number = 0;
    for (const auto& [field, merged] : fields) {
        CApp empty;
        CApp full;
        CApp source;
        (full.*field) = OwnedString(u"own");
        (source.*field) = OwnedString(u"other");
        empty.MergeFrom(source);
        full.MergeFrom(source);
        EXPECT_EQ((empty.*field).View() == u"other", merged) << "field " << number;
        EXPECT_EQ((empty.*field).IsNull(), !merged) << "field " << number;
        EXPECT_TRUE((full.*field).View() == u"own") << "field " << number;
        EXPECT_TRUE((source.*field).View() == u"other") << "field " << number;
        ++number;
    }
}

TEST_F(AppIdentityTest, MergeFrom_TakesTheSmallerSizeUnlessOneWasGathered) {
    const struct {
        std::int64_t own;
        std::int64_t gathered;
        std::int64_t source;
        std::int64_t result;
    } cases[] = {
        {0, 0, 500, 500}, {300, 0, 500, 500}, {300, 1, 500, 300}, {700, 1, 500, 500},
        {700, 0, 0, 700}, {700, 0, -1, 700},  {500, 1, 500, 500}, {0, 1, 500, 0},
    };
    for (const auto& c : cases) {
        CApp app;
        CApp source;
        app.llEstimatedSize = c.own;
        app.llGatheredSize = c.gathered;
        source.llEstimatedSize = c.source;
        app.MergeFrom(source);
        EXPECT_EQ(app.llEstimatedSize, c.result) << c.own << " " << c.gathered << " " << c.source;
    }
}

TEST_F(AppIdentityTest, MergeFrom_MovesTheIconOnce) {
    CApp app;
    CApp first;
    CApp second;
    for (CApp* source : {&first, &second}) {
        source->pIconData = std::make_unique<std::byte[]>(4);
        source->dwIconDataSize = 4;
    }
    const std::byte* const moved = first.pIconData.get();
    app.MergeFrom(first);
    app.MergeFrom(second);
    EXPECT_EQ(app.GetIconData(), moved);
    EXPECT_EQ(app.GetIconDataSize(), 4U);
    EXPECT_EQ(first.GetIconData(), nullptr);
    EXPECT_EQ(first.GetIconDataSize(), 0U);
    EXPECT_NE(second.GetIconData(), nullptr);
    EXPECT_EQ(second.GetIconDataSize(), 4U);
}

TEST_F(AppIdentityTest, MergeFrom_JoinsCodesFlagsAndTag) {
    Guid one;
    Guid two;
    one.bytes[0] = 1;
    two.bytes[0] = 2;
    CApp app;
    CApp source;
    source.ProductCode = one;
    source.RelatedCodes = {one, two};
    source.qwFlags = AppFlags::kWindowsInstaller;
    source.dwTag = 9;
    app.RelatedCodes = {two};
    app.qwFlags = AppFlags::k64Bit;
    app.dwTag = 3;
    app.MergeFrom(source);
    EXPECT_TRUE(app.ProductCode == one);
    EXPECT_EQ(app.RelatedCodes.size(), 2U);
    EXPECT_EQ(app.qwFlags, 0x5U);
    EXPECT_EQ(app.dwTag, 9U);
    source.ProductCode = two;
    app.MergeFrom(source);
    EXPECT_TRUE(app.ProductCode == one) << "a code that is known stays";
}

}  // namespace
}  // namespace roundup
