// The command uninstall where programs can be run: on a machine whose processes end when the test says so.
#include <thread>

#include "host/program.h"
#include "tests/support/machinetest.h"
#include "tests/support/processmachine.h"

namespace roundup::host {
namespace {

constexpr std::u16string_view kTool = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tool";

class UninstallRunTest : public MachineTest {
  protected:
    UninstallRunTest() { builder.Text(kTool, u"DisplayName", u"Tool").Text(kTool, u"InstallLocation", u"C:\\Tool"); }
    void StartWith(std::u16string_view command) {
        builder.Text(kTool, u"UninstallString", command);
        auto machine = std::make_unique<ProcessMachine>(builder.Build());
        m_processes = &machine->Processes();
        Start(std::move(machine));
    }
    // Ends the process once it has been started.
    int RunUntilEnd(std::uint32_t code) {
        std::thread ending([&] {
            while (m_processes->AllStarted().empty()) std::this_thread::yield();
            m_processes->End(0, code);
        });
        const int status = Run();
        ending.join();
        return status;
    }
    int Run() {
        Options options;
        options.command = Command::Uninstall;
        options.key = "tool";
        options.progress = ProgressStyle::None;
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = RunCommand(options);
        output = ::testing::internal::GetCapturedStdout();
        error = ::testing::internal::GetCapturedStderr();
        m_processes->WaitUntilAllClosed();
        return status;
    }

    ScriptedProcesses* m_processes = nullptr;
    std::string output;
    std::string error;
};

TEST_F(UninstallRunTest, ExitStatus_IsThatOfTheUninstaller) {
    for (const std::uint32_t code : {0U, 1U, 1605U, 0xC0000005U}) {
        StartWith(u"C:\\Tool\\u.exe /S");
        EXPECT_EQ(RunUntilEnd(code), static_cast<int>(code));
        EXPECT_EQ(output, "C:\\Tool\\u.exe /S\n");
        EXPECT_EQ(error, "");
        ASSERT_EQ(m_processes->AllStarted().size(), 1U);
        EXPECT_TRUE(m_processes->AllStarted()[0].command == u"C:\\Tool\\u.exe /S");
    }
}

TEST_F(UninstallRunTest, WhatCannotRun_FailsOrSaysThatNothingIsToRun) {
    StartWith(u"absent.exe");
    m_processes->Refuse(u"absent.exe", kErrorFileNotFound);
    EXPECT_EQ(Run(), kExitFailure);
    EXPECT_NE(error.find("cannot be started"), std::string::npos) << error;
    StartWith(u"");
    EXPECT_EQ(Run(), kExitSuccess);
    EXPECT_EQ(output, "");
    EXPECT_NE(error.find("nothing to run"), std::string::npos) << error;
    EXPECT_TRUE(m_processes->AllStarted().empty());
}

}  // namespace
}  // namespace roundup::host
