// Uninstalls from UnInstallApp to OnUnInstallDone, with processes that end when the test says so.
#include "externfuncinc/externfunc.h"
#include "tests/externfuncinc/doneobserver.h"
#include "tests/externfuncinc/scripted.h"
#include "tests/support/faultmachine.h"
#include "tests/support/machinetest.h"
#include "tests/support/processmachine.h"

namespace roundup {
namespace {

constexpr std::u16string_view kUninstall = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

class UninstallTest : public MachineTest {
  protected:
    void Load(std::initializer_list<std::u16string_view> names) {
        for (const std::u16string_view name : names) {
            builder.Text(std::u16string(kUninstall).append(name), u"UninstallString",
                         std::u16string(name) + u".exe /S");
        }
        m_processes =
            &static_cast<ProcessMachine&>(Start(std::make_unique<ProcessMachine>(builder.Build()))).Processes();
        m_manager = RefPtr<ScriptedManager>::Adopt(new ScriptedManager);
        for (const std::u16string_view name : names) m_manager->found.push_back(NewApp(name, AppFlags::k64BitView));
        m_facade = RefPtr<CRoundup>::Adopt(new CRoundup(RefPtr<IAppManager>(RefPtr<ScriptedManager>(m_manager))));
        m_facade->Init();
        m_facade->SetObserver(&m_observer);
        Enumerate();
    }
    ~UninstallTest() override {
        m_facade.Reset();
        m_manager.Reset();
    }
    static RefPtr<CApp> NewApp(std::u16string_view name, std::uint64_t flags) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszName = OwnedString(name);
        app->pwszKeyString = OwnedString(name);
        app->qwFlags = flags;
        app->pIconData = std::make_unique<std::byte[]>(1);
        app->pIconData[0] = static_cast<std::byte>(name[0]);
        app->dwIconDataSize = 1;
        return app;
    }
    void Enumerate() {
        m_observer.records.clear();
        EXPECT_EQ(m_facade->LoadApps(0), 0);
        m_facade->EnumApps();
    }

    DoneObserver m_observer;
    ScriptedProcesses* m_processes = nullptr;
    RefPtr<ScriptedManager> m_manager;
    RefPtr<CRoundup> m_facade;
};

TEST_F(UninstallTest, Uninstalls_RunSideBySideAndSoDoTheirEnds) {
    Load({u"one", u"two", u"three"});
    m_observer.overlapping = 3;
    for (IRmxApp* const record : m_observer.records) EXPECT_EQ(m_facade->UnInstallApp(record), 0);
    const auto started = m_processes->AllStarted();
    ASSERT_EQ(started.size(), 3U);
    EXPECT_TRUE(started[1].command == u"two.exe /S");
    for (const std::size_t number : {2U, 0U, 1U}) m_processes->End(number, static_cast<std::uint32_t>(10 + number));
    // Serialised calls would wait here for ever.
    for (const auto& done : m_observer.WaitFor(3)) {
        EXPECT_EQ(done.record, m_observer.records.at(done.code - 10));
        EXPECT_NE(done.thread, std::this_thread::get_id());
    }
    m_processes->WaitUntilAllClosed();
}

// Another application has its place in the array by the time that the uninstall ends.
TEST_F(UninstallTest, RecordOfARunningUninstall_StaysWholeWhenTheHostLoadsAgain) {
    Load({u"one", u"two"});
    IRmxApp* const record = m_observer.records.at(1);
    ASSERT_EQ(m_facade->UnInstallApp(record), 0);
    m_manager->found = {NewApp(u"other", AppFlags::k64BitView), NewApp(u"other", AppFlags::k64BitView)};
    Enumerate();
    Enumerate();
    EXPECT_EQ(m_facade->UnInstallApp(record), -1) << "it is no record of this load";
    m_processes->End(0, 7);
    const auto done = m_observer.WaitFor(1)[0];
    EXPECT_EQ(done.record, record);
    EXPECT_TRUE(done.name == u"two");
    EXPECT_EQ(done.icon, 't');
}

// A facade that is closed, or has no observer any more, is told nothing; the process is waited for all the same. Each
// has an end of its own: a thread may ask for the observer after its process was closed.
TEST_F(UninstallTest, EndBehindTheFacade_ReachesNobody) {
    Load({u"one"});
    enum class Close { NoObserver, Uninit, Release };
    std::size_t number = 0;
    for (const Close close : {Close::NoObserver, Close::Uninit, Close::Release}) {
        m_facade = RefPtr<CRoundup>::Adopt(new CRoundup(RefPtr<IAppManager>(RefPtr<ScriptedManager>(m_manager))));
        m_facade->Init();
        m_facade->SetObserver(&m_observer);
        Enumerate();
        ASSERT_EQ(m_facade->UnInstallApp(m_observer.records.at(0)), 0);
        if (close == Close::NoObserver) m_facade->SetObserver(nullptr);
        if (close == Close::Uninit) m_facade->Uninit();
        if (close == Close::Release) m_facade.Reset();
        m_processes->End(number++, 1);
        m_processes->WaitUntilAllClosed();
    }
    EXPECT_EQ(m_observer.Count(), 0U);
}

TEST_F(UninstallTest, ProcessThatDoesNotStart_FailsAndTellsNobody) {
    Load({u"absent", u"denied", u"null", u"good"});
    m_processes->Refuse(u"absent.exe /S", kErrorFileNotFound);
    m_processes->Refuse(u"denied.exe /S", kErrorAccessDenied);
    m_processes->Refuse(u"null.exe /S", kErrorSuccess);
    for (const std::size_t refused : {0U, 1U, 2U}) EXPECT_EQ(m_facade->UnInstallApp(m_observer.records[refused]), -1);
    EXPECT_TRUE(m_processes->AllStarted().empty());
    EXPECT_EQ(m_observer.Count(), 0U);
    EXPECT_EQ(m_facade->UnInstallApp(m_observer.records[3]), 0) << "a refused start leaves the launcher in order";
    m_processes->End(0, 5);
    EXPECT_EQ(m_observer.WaitFor(1)[0].code, 5U);
    m_processes->WaitUntilAllClosed();
}

// A started process is waited for and its end told once, whatever failed; one that did not start is told of by nobody.
TEST_F(UninstallTest, AnyOperationFailing_StartsAndTellsOrDoesNeither) {
    Load({u"one"});
    std::size_t told = 0;
    bool refused = false;
    for (const Area area : {Area::Registry, Area::Files, Area::Shell, Area::System, Area::Processes}) {
        bool fired = true;
        for (std::uint64_t n = 1; fired; ++n) {
            m_facade.Reset();
            auto processes = std::make_unique<ProcessMachine>(builder.Build());
            m_processes = &processes->Processes();
            auto owned = std::make_unique<FaultInjectingMachine>(std::move(processes));
            FaultInjectingMachine& machine = *owned;
            Start(std::move(owned));
            m_facade = RefPtr<CRoundup>::Adopt(new CRoundup(RefPtr<IAppManager>(RefPtr<ScriptedManager>(m_manager))));
            m_facade->Init();
            m_facade->SetObserver(&m_observer);
            Enumerate();
            machine.FailOperation(area, machine.OperationsOf(area) + n, kErrorAccessDenied);
            const bool runs = m_facade->UnInstallApp(m_observer.records.at(0)) == 0;
            refused |= !runs;
            EXPECT_EQ(m_processes->AllStarted().size(), runs ? 1U : 0U) << static_cast<int>(area) << ' ' << n;
            if (runs) {
                m_processes->End(0, 7);
                m_observer.WaitFor(++told);
                m_processes->WaitUntilAllClosed();
            }
            fired = machine.HasFired();
        }
    }
    EXPECT_EQ(m_observer.Count(), told);
    EXPECT_TRUE(refused);
}

// A window is wanted for what may ask its user something, and none for the command of a store package.
TEST_F(UninstallTest, Flags_HideTheWindowWhenTold) {
    Load({u"one"});
    CUnInstallManager launcher(m_facade.Get());
    const std::shared_ptr<IRmxApp> record = std::make_shared<CAppInfo>();
    EXPECT_FALSE(launcher.AddUnInstallProc(OwnedString(), 0, record));
    EXPECT_FALSE(launcher.AddUnInstallProc(OwnedString(u""), 1, record));
    EXPECT_TRUE(launcher.AddUnInstallProc(OwnedString(u"shown"), 0, record));
    EXPECT_TRUE(launcher.AddUnInstallProc(OwnedString(u"hidden"), 1, record));
    const auto started = m_processes->AllStarted();
    ASSERT_EQ(started.size(), 2U);
    EXPECT_EQ(started[0].flags, 0U);
    EXPECT_EQ(started[1].flags, 0x8000000U);
    for (const std::size_t number : {0U, 1U}) m_processes->End(number, 0);
    m_observer.WaitFor(2);
    m_processes->WaitUntilAllClosed();
}

}  // namespace
}  // namespace roundup
