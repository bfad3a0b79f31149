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
        {"code alone", {u"X", 1, u"a", u"k"}, {u"Y", 1, u"b", u"l"}, true},
        {"nil codes never match", {u"", 0, u"a", u"k"}, {u"", 0, u"b", u"l"}, false},
        {"name alone, ignoring case", {u"X", 1, u"T\u00C4ST", u"k"}, {u"Y", 2, u"t\u00E4st", u"l"}, true},
        {"empty names never match", {u"", 1, u"", u"k"}, {u"", 2, u"", u"l"}, false},
        {"key alone, ignoring case", {u"X", 1, u"a", u"{Key}"}, {u"Y", 2, u"b", u"{KEY}"}, true},
        {"empty keys never match", {u"", 1, u"a", u""}, {u"", 2, u"b", u""}, false},
    };
    for (const auto& c : cases) {
        AppRecordEx record;
        AppOf(c.record)->FillAppInfo(record);
        EXPECT_EQ(AppOf(c.app)->IsSame(record), c.same) << c.what;
    }
}

TEST_F(AppIdentityTest, MergeFrom_FillsWhatIsEmptyAndKeepsTheRest) {
    using Field = OwnedString CApp::*;
    const std::vector<Field> merged{&CApp::pwszName,       &CApp::pwszKeyString,     &CApp::pwszInstallLoc,
                                    &CApp::pwszMsiPath,    &CApp::pwszInstallSource, &CApp::pwszVersion,
                                    &CApp::pwszType,       &CApp::pwszTypeDes,       &CApp::pwszUnInstallProgram,
                                    &CApp::pwszIconProgram};
    const std::vector<Field> kept{&CApp::pwszPublisher,      &CApp::pwszInstallDate,
                                  &CApp::pwszParentKeyName,  &CApp::pwszParentDisplayName,
                                  &CApp::pwszRealInstallLoc, &CApp::pwszOriginalInstallLoc};
    for (const auto* fields : {&merged, &kept}) {
        for (const Field& field : *fields) {
            CApp empty, full, source;
            full.*field = OwnedString(u"own");
            source.*field = OwnedString(u"other");
            empty.MergeFrom(source);
            full.MergeFrom(source);
            EXPECT_EQ((empty.*field).View(), fields == &merged ? u"other" : u"") << &field - fields->data();
            EXPECT_EQ((full.*field).View(), u"own") << &field - fields->data();
        }
    }
}

TEST_F(AppIdentityTest, MergeFrom_TakesTheSmallerSizeUnlessOneWasGathered) {
    const struct {
        std::int64_t own, gathered, source, result;
    } cases[] = {
        {0, 0, 500, 500}, {300, 0, 500, 500}, {300, 1, 500, 300}, {700, 1, 500, 500},
        {700, 0, 0, 700}, {700, 0, -1, 700},  {500, 1, 500, 500}, {0, 1, 500, 0},
    };
    for (const auto& c : cases) {
        CApp app, source;
        app.llEstimatedSize = c.own;
        app.llGatheredSize = c.gathered;
        source.llEstimatedSize = c.source;
        app.MergeFrom(source);
        EXPECT_EQ(app.llEstimatedSize, c.result) << c.own << " " << c.gathered << " " << c.source;
    }
}

TEST_F(AppIdentityTest, MergeFrom_MovesTheIconOnce) {
    CApp app, first, second;
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
    EXPECT_NE(second.GetIconData(), nullptr);
}

TEST_F(AppIdentityTest, MergeFrom_JoinsCodesFlagsAndTag) {
    Guid one, two;
    one.bytes[0] = 1;
    two.bytes[0] = 2;
    CApp app, source;
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
