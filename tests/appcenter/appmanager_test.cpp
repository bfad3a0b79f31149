// What the manager answers about the catalogue that it holds.
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "appcenter/appeunm/prune.h"
#include "tests/appcenter/catalogue_support.h"

namespace roundup {
namespace {

// A store package as the manager sees it: by its interface alone.
class PackageDouble final : public CApp {
  public:
    explicit PackageDouble(std::u16string_view fullName) { AssignString(pwszKeyString, fullName); }
    std::int32_t IsAppx() const override { return 1; }
    ResultCode Gather(IApp*, IRemoveRepeatReg*) override {
        ++gathers;
        return gatherResult;
    }

    int gathers = 0;
    ResultCode gatherResult;
};

class RuntimeDouble final : public IHearthRuntime {
  public:
    std::uint32_t AddRef() override { return ++references; }
    std::uint32_t Release() override { return --references; }
    bool ClassifyApp(IApp* app, RuntimeRecord* record) override {
        record->year = static_cast<std::uint32_t>(classified.size());
        classified.emplace_back(app->GetName());
        return classified.back() != u"other";
    }
    std::uint8_t CheckApp(void*, RuntimeRecord* record, std::uint32_t* out) override {
        checkedYears.push_back(record != nullptr ? static_cast<int>(record->year) : -1);
        *out = 7;
        return static_cast<int>(checkedYears.size()) == failAt ? 0 : 1;
    }
    void AddRuntimeRules(IApp*, CAppRuleSet*) override {}

    std::uint32_t references = 1;
    int failAt = 0;
    std::vector<std::u16string> classified;
    std::vector<int> checkedYears;
};

RefPtr<CApp> MakeApp(std::u16string_view key, std::u16string_view name) {
    auto app = RefPtr<CApp>::Adopt(new CApp);
    AssignString(app->pwszKeyString, key);
    AssignString(app->pwszName, name);
    return app;
}

class AppManagerTest : public CatalogueTest {
  protected:
    void SetUp() override {
        Entry(kMachineKey, u"one");
        Entry(kMachineKey, u"other");
        Entry(kMachineKey, u"two");
        m_manager = &Load();
        m_package = new PackageDouble(u"Otter.Notes_1.0_x64");
        m_manager->Packages().push_back(RefPtr<IApp>::Adopt(m_package));
    }

    std::unique_ptr<AppRecordEx> RecordOf(std::u16string_view name, std::uint64_t flags = 0) {
        auto record = std::make_unique<AppRecordEx>();
        MakeApp(u"", name)->FillAppInfo(*record);
        record->qwFlags = flags;
        return record;
    }

    CAppManager* m_manager = nullptr;
    PackageDouble* m_package = nullptr;
};

TEST_F(AppManagerTest, GetApp_CountsPackagesBehindApplications) {
    EXPECT_EQ(m_manager->GetCount(), 4U);
    IApp* app = nullptr;
    ASSERT_TRUE(Succeeded(m_manager->GetApp(&app, 3)));
    EXPECT_EQ(app, m_package);
    EXPECT_EQ(app->Release(), 1U) << "one reference was the caller's";
    IApp* const before = app;
    for (const std::uint32_t past : {4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Small(m_manager->GetApp(&app, past)), SmallCode::NoMoreItems);
        EXPECT_EQ(app, before);
    }
    EXPECT_EQ(Small(m_manager->GetApp(nullptr, 0)), SmallCode::BadArgument);
}

TEST_F(AppManagerTest, HasApp_LooksInTheListThatTheRecordNamesAndBelowWhenAsked) {
    AssignString(m_package->pwszName, u"notes");
    EXPECT_EQ(m_manager->HasApp(nullptr), 0);
    EXPECT_EQ(m_manager->HasApp(RecordOf(u"ONE").get()), 1);
    EXPECT_EQ(m_manager->HasApp(RecordOf(u"one", AppFlags::kStorePackage).get()), 0);
    EXPECT_EQ(m_manager->HasApp(RecordOf(u"notes").get()), 0);
    EXPECT_EQ(m_manager->HasApp(RecordOf(u"Notes", AppFlags::kStorePackage).get()), 1);
    auto& one = static_cast<CApp&>(*m_manager->Applications().front());
    one.SubApps.push_back(MakeApp(u"part", u"part"));
    static_cast<CApp&>(*one.SubApps.front()).SubApps.push_back(MakeApp(u"deep", u"deep"));
    EXPECT_EQ(m_manager->HasAppOrSubApp(RecordOf(u"deep").get()), 1);
    EXPECT_EQ(m_manager->HasApp(RecordOf(u"deep").get()), 0);
    EXPECT_EQ(m_manager->HasAppOrSubApp(RecordOf(u"absent").get()), 0);
}

TEST_F(AppManagerTest, GetGatheredApp_FailsAsEachArgumentDeserves) {
    m_package->gatherResult = FailQuiet(SmallCode::ShortRead);
    const std::tuple<const char16_t*, const char16_t*, std::uint64_t, SmallCode> cases[] = {
        {nullptr, u"one", 0, SmallCode::BadArgument},
        {u"", u"one", 0, SmallCode::BadArgument},
        {u"absent", nullptr, 0, SmallCode::BadArgument},
        {u"one", u"another name", 0, SmallCode::BadArgument},
        {u"Otter.Notes_1.0_x64", nullptr, 0, SmallCode::BadArgument},
        {u"one", nullptr, AppFlags::kStorePackage, SmallCode::GeneralFailure},
        {u"OTTER.notes_1.0_x64", nullptr, AppFlags::kStorePackage, SmallCode::ShortRead},
    };
    for (const auto& [key, name, flags, result] : cases) {
        IApp* app = nullptr;
        EXPECT_EQ(Small(m_manager->GetGatheredApp(key, name, flags, &app)), result);
        EXPECT_EQ(app, nullptr);
    }
    EXPECT_EQ(Small(m_manager->GetGatheredApp(u"one", nullptr, 0, nullptr)), SmallCode::BadArgument);
    EXPECT_EQ(m_package->gathers, 1);

    m_package->gatherResult = kSuccess;
    IApp* app = nullptr;
    ASSERT_TRUE(Succeeded(m_manager->GetGatheredApp(u"Otter.Notes_1.0_x64", u"any", AppFlags::kStorePackage, &app)));
    EXPECT_EQ(app, m_package);
    EXPECT_EQ(app->Release(), 1U);
}

TEST_F(AppManagerTest, CheckRuntime_AsksForEachRuntimeUntilOneIsRefused) {
    RuntimeDouble runtime;
    std::uint32_t out = 1;
    int argument = 0;
    EXPECT_EQ(m_manager->CheckRuntime(nullptr, &runtime, &out), 1);
    EXPECT_EQ(m_manager->CheckRuntime(&argument, nullptr, &out), 1);
    EXPECT_EQ(out, 0U);
    EXPECT_TRUE(runtime.checkedYears.empty());

    EXPECT_EQ(m_manager->CheckRuntime(&argument, &runtime, &out), 1);
    EXPECT_EQ(out, 7U);
    EXPECT_EQ(runtime.checkedYears, (std::vector<int>{0, 2})) << "the one in between is no runtime";

    runtime = RuntimeDouble();
    runtime.failAt = 1;
    EXPECT_EQ(m_manager->CheckRuntime(&argument, &runtime, &out), 0);

    runtime = RuntimeDouble();
    m_manager->Applications().clear();
    EXPECT_EQ(m_manager->CheckRuntime(&argument, &runtime, &out), 1);
    EXPECT_EQ(runtime.checkedYears, std::vector<int>{-1}) << "an empty catalogue asks without a record";
    EXPECT_EQ(runtime.references, 1U);
}

TEST(PruneApplications, EntriesWithoutNameOrKey_GoHereAndOneLevelDown) {
    AppList apps;
    for (const auto* const name : {u"", u"kept"}) {
        auto app = MakeApp(u"key", name);
        for (const auto* const key : {u"", u"sub"}) app->SubApps.push_back(MakeApp(key, u"sub"));
        static_cast<CApp&>(*app->SubApps.back()).SubApps.push_back(MakeApp(u"", u""));
        apps.push_back(std::move(app));
    }
    apps.push_back(MakeApp(u"", u"keyless"));
    PruneApplications(apps);
    ASSERT_EQ(apps.size(), 1U) << "sub-applications do not save an application without a name";
    const auto& kept = static_cast<const CApp&>(*apps.front());
    ASSERT_EQ(kept.SubApps.size(), 1U);
    EXPECT_EQ(static_cast<const CApp&>(*kept.SubApps.front()).SubApps.size(), 1U) << "two levels down stays";
}

}  // namespace
}  // namespace roundup
