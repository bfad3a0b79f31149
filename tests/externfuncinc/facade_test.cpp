#include <array>
#include <cstring>

#include "externfuncinc/externfunc.h"
#include "tests/externfuncinc/scripted.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

using Told = std::vector<std::string>;

constexpr std::u16string_view kUninstall = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

class FacadeTest : public MachineTest {
  protected:
    // Entries one and two are there; gone is not.
    FacadeTest() {
        builder.Text(std::u16string(kUninstall) + u"one", u"UninstallString", u"")
            .Key(std::u16string(kUninstall) + u"two");
        Start();
        m_manager = RefPtr<ScriptedManager>::Adopt(new ScriptedManager);
        m_facade = RefPtr<CRoundup>::Adopt(new CRoundup(RefPtr<IAppManager>(RefPtr<ScriptedManager>(m_manager))));
        for (const std::u16string_view key : {u"one", u"gone", u"two"}) m_manager->found.push_back(NewApp(key));
    }
    ~FacadeTest() override {
        m_facade.Reset();
        m_manager.Reset();
    }

    static RefPtr<CApp> NewApp(std::u16string_view key) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszName = OwnedString(key);
        app->pwszKeyString = OwnedString(key);
        app->qwFlags = AppFlags::k64BitView;
        return app;
    }
    void Arm() {
        m_facade->Init();
        m_facade->SetObserver(&m_observer);
    }
    IRmxApp* FirstRecord() {
        m_facade->EnumApps();
        return m_observer.records.at(0);
    }

    ScriptedObserver m_observer;
    RefPtr<ScriptedManager> m_manager;
    RefPtr<CRoundup> m_facade;
};

TEST_F(FacadeTest, CompletedLoad_ReportsAndEnumeratesWhatIsStillThere) {
    Arm();
    EXPECT_EQ(m_facade->LoadApps(1), 0);
    EXPECT_EQ(m_observer.Take(), Told({"10", "20", "40", "50", "60", "70", "80", "90", "95", "98", "100"}));
    EXPECT_EQ(m_facade->EnumApps(), 0);
    EXPECT_EQ(m_observer.Take(), Told({"one", "two"}));
    EXPECT_EQ(m_facade->SaveContendProc(), 0);
}

// The observer is asked once more, with 100, and nothing is left of an earlier load.
TEST_F(FacadeTest, CancelledLoad_FailsAtEveryPercentAndLeavesNoRecords) {
    Arm();
    for (const std::uint32_t percent : {10U, 20U, 40U, 50U, 60U, 70U, 80U, 90U, 95U}) {
        m_observer.cancelAt = 0;
        ASSERT_EQ(m_facade->LoadApps(0), 0);
        m_observer.Take();
        m_observer.cancelAt = percent;
        EXPECT_EQ(m_facade->LoadApps(0), -1);
        const Told told = m_observer.Take();
        ASSERT_GE(told.size(), 2U);
        EXPECT_EQ(told[told.size() - 2], std::to_string(percent));
        EXPECT_EQ(told.back(), "100");
        EXPECT_EQ(m_facade->EnumApps(), 0);
        EXPECT_TRUE(m_observer.Take().empty()) << percent;
    }
    for (const std::uint32_t percent : {98U, 100U}) {
        m_observer.cancelAt = percent;
        EXPECT_EQ(m_facade->LoadApps(0), 0) << "the answer does not matter any more";
    }
}

TEST_F(FacadeTest, UnInstallApp_RefusesWhatItCannotUninstall) {
    Arm();
    m_facade->LoadApps(0);
    m_facade->EnumApps();
    ASSERT_EQ(m_observer.records.size(), 2U);
    IRmxApp* const withEmptyCommand = m_observer.records[0];
    IRmxApp* const withoutCommand = m_observer.records[1];
    CAppInfo foreign;
    m_observer.Take();
    EXPECT_EQ(m_facade->UnInstallApp(nullptr), -1);
    EXPECT_EQ(m_facade->UnInstallApp(withoutCommand), -1);
    EXPECT_EQ(m_facade->UnInstallApp(&foreign), -1) << "no record of this facade";
    EXPECT_TRUE(m_observer.told.empty());
    EXPECT_EQ(m_facade->UnInstallApp(withEmptyCommand), 0);
    EXPECT_EQ(m_observer.records.at(0), withEmptyCommand);
    EXPECT_EQ(m_observer.Take(), Told({"done 0"}));
}

// The host must find its record at the offsets that it was compiled with.
TEST_F(FacadeTest, Record_HoldsTheApplicationAtItsOffsets) {
    RefPtr<CApp> app = NewApp(u"one");
    app->pwszPublisher = OwnedString(u"Maker");
    app->pwszInstallDate = OwnedString(u"20240131");
    app->pwszRealInstallLoc = OwnedString(u"D:\\R");
    app->pwszInstallLoc = OwnedString(std::u16string(300, u'L'));
    app->llEstimatedSize = 0x0102030405060708;
    app->qwFlags |= AppFlags::k64Bit;
    app->pIconData = std::make_unique<std::byte[]>(5);
    app->dwIconDataSize = 5;
    m_manager->found = {app};
    Arm();
    m_facade->LoadApps(0);
    IRmxApp* const record = FirstRecord();
    std::array<unsigned char, 3141> bytes;
    std::memcpy(bytes.data(), record->GetAppInfo(), bytes.size());
    const auto textAt = [&bytes](std::size_t offset) {
        std::u16string text;
        for (std::size_t i = offset; i < offset + 520; i += 2) {
            const auto unit = static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8));
            if (unit == 0) break;
            text += unit;
        }
        return text;
    };
    EXPECT_TRUE(textAt(0) == u"one");
    EXPECT_TRUE(textAt(520) == u"Maker");
    EXPECT_TRUE(textAt(1560) == u"one");
    EXPECT_TRUE(textAt(2080) == u"D:\\R");
    EXPECT_TRUE(textAt(2600) == std::u16string(259, u'L'));
    EXPECT_EQ(bytes[3120], 0x01);
    EXPECT_EQ(bytes[3128], 0x08);
    EXPECT_EQ(bytes[3135], 0x01);
    EXPECT_EQ(std::memcmp(&bytes[3136], "\0\0\0\0\0", 5), 0);
    EXPECT_EQ(record->GetAppIconSize(), 5U);
    EXPECT_EQ(static_cast<const void*>(record->GetAppIconData()), app->GetIconData());
}

// An element whose application could not be had stays empty and answers nothing.
TEST_F(FacadeTest, ApplicationThatCannotBeHad_LeavesItsPlaceEmpty) {
    m_manager->found[1] = nullptr;
    Arm();
    EXPECT_EQ(m_facade->LoadApps(0), 0);
    m_observer.Take();
    m_facade->EnumApps();
    EXPECT_EQ(m_observer.Take(), Told({"one", "two"}));
}

// Applications of the snapshot are held by the bridge and the record alone after the manager has let go of them.
TEST_F(FacadeTest, Snapshot_KeepsApplicationsUntilTheNextLoad) {
    Arm();
    m_facade->LoadApps(0);
    RefPtr<CApp> app = m_manager->loaded[0];
    m_manager->loaded.clear();
    m_manager->found.clear();
    EXPECT_EQ(app->AddRef(), 4U);
    EXPECT_EQ(app->Release(), 3U);
    m_facade->LoadApps(0);
    EXPECT_EQ(app->AddRef(), 2U);
    EXPECT_EQ(app->Release(), 1U);
}

// What a host may do while it is being called. Each would end in a crash if the facade relied on what it knew before.
TEST_F(FacadeTest, CallsFromInsideTheObserver_AreSurvived) {
    enum class Call { NoObserver, Close, GiveUp, Load };
    const struct {
        const char* at;
        Call call;
        std::int64_t loaded;  // what the outer LoadApps answers
        Told after;           // what is told behind that call
    } cases[] = {
        {"10", Call::NoObserver, 0, {}},
        {"one", Call::NoObserver, 0, {}},
        {"10", Call::Close, -1, {}},
        {"one", Call::Close, 0, {}},
        {"done 0", Call::Close, 0, {}},
        {"10", Call::GiveUp, 0, {"20", "40", "50", "60", "70", "80", "90", "95", "98", "100"}},
        {"one", Call::GiveUp, 0, {"two"}},
        {"95", Call::Load, 0, {"98", "100", "one", "two", "done 0"}},
        {"two", Call::Load, 0, {"10", "20", "40", "50", "60", "70", "80", "90", "95", "98", "100"}},
    };
    for (const auto& c : cases) {
        auto* const facade = new CRoundup(RefPtr<IAppManager>(RefPtr<ScriptedManager>(m_manager)));
        ScriptedObserver observer;
        bool called = false;
        observer.callBack = [&](const std::string& told) {
            if (called || told != c.at) return;
            called = true;
            observer.Take();
            if (c.call == Call::NoObserver) facade->SetObserver(nullptr);
            if (c.call == Call::Close) facade->Uninit();
            if (c.call == Call::GiveUp) facade->Release();
            if (c.call == Call::Load) {
                EXPECT_EQ(facade->LoadApps(0), told == "95" ? -1 : 0);
            }
        };
        facade->Init();
        facade->SetObserver(&observer);
        EXPECT_EQ(facade->LoadApps(0), c.loaded) << c.at;
        const auto gone = [&] { return called && c.call == Call::GiveUp; };
        if (!gone()) facade->EnumApps();
        if (!gone() && !observer.records.empty()) facade->UnInstallApp(observer.records.front());
        EXPECT_EQ(observer.told, c.after) << c.at << " " << static_cast<int>(c.call);
        if (!gone()) facade->Release();
        EXPECT_EQ(observer.references, 1) << c.at;
    }
}

TEST_F(FacadeTest, LoadThatRunsOutOfMemory_Fails) {
    Arm();
    m_manager->duringLoad = [] { throw std::bad_alloc(); };
    EXPECT_EQ(m_facade->LoadApps(0), -1);
    EXPECT_EQ(m_observer.Take(), Told({"100"}));
}

}  // namespace
}  // namespace roundup
