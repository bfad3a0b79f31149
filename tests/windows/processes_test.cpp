// Processes of the live machine: what the uninstall launcher needs of them.
#include <cstdlib>
#include <string>

#include "platform/livemachine.h"
#include "platform/windows/winhandle.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

constexpr const wchar_t* kExpectedCommand = L"ROUNDUP_TEST_COMMAND";
constexpr const wchar_t* kExitCode = L"ROUNDUP_TEST_CODE";
constexpr const wchar_t* kEvent = L"ROUNDUP_TEST_EVENT";

std::wstring Variable(const wchar_t* name) {
    wchar_t text[1000] = {};
    ::GetEnvironmentVariableW(name, text, 1000);
    return text;
}

// Run by the tests below in processes of their own. It is told by the environment, which says nothing of how the
// command line has come through, to compare that, wait for an event, and end with a code.
TEST(ProgramOfTheTest, DISABLED_Run) {
    if (Variable(kExitCode).empty()) GTEST_SKIP() << "run by other tests";
    if (Variable(kExpectedCommand) != ::GetCommandLineW()) ::ExitProcess(111);
    if (const std::wstring name = Variable(kEvent); !name.empty()) {
        const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
        if (::WaitForSingleObject(event.Get(), 60'000) != WAIT_OBJECT_0) ::ExitProcess(112);
    }
    ::ExitProcess(static_cast<UINT>(std::wcstoul(Variable(kExitCode).c_str(), nullptr, 10)));
}

class LiveProcessesTest : public MachineTest {
  protected:
    LiveProcessesTest() : m_processes(Start(OpenLiveMachine()).Processes()) {}
    ~LiveProcessesTest() override {
        for (const wchar_t* name : {kExpectedCommand, kExitCode, kEvent}) ::SetEnvironmentVariableW(name, nullptr);
    }

    // A command line of the program above, with text behind it.
    static std::u16string Command(const std::wstring& program, const std::wstring& text, std::uint32_t code) {
        const std::wstring command =
            L"\"" + program + L"\" --gtest_also_run_disabled_tests --gtest_filter=ProgramOfTheTest.* " + text;
        ::SetEnvironmentVariableW(kExpectedCommand, command.c_str());
        ::SetEnvironmentVariableW(kExitCode, std::to_wstring(code).c_str());
        return FromWide(command.c_str());
    }
    static std::wstring Self() {
        wchar_t path[MAX_PATH] = {};
        ::GetModuleFileNameW(nullptr, path, MAX_PATH);
        return path;
    }
    ProcessHandle Launch(const std::u16string& command, std::uint32_t flags) {
        ProcessHandle process = 0;
        std::uint32_t id = 0;
        EXPECT_EQ(m_processes.Start(command.c_str(), flags, process, id), kErrorSuccess);
        EXPECT_EQ(::GetProcessId(reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(process))), id);
        return process;
    }
    std::uint32_t End(ProcessHandle process) {
        std::uint32_t code = 0;
        EXPECT_EQ(m_processes.Wait(process), kErrorSuccess);
        EXPECT_EQ(m_processes.GetExitCode(process, code), kErrorSuccess);
        m_processes.Close(process);
        return code;
    }

    IProcesses& m_processes;
};

TEST_F(LiveProcessesTest, ExitCodes_ComeAsTheyAre) {
    for (const std::uint32_t flags : {0U, kCreateNoWindow}) {
        // 259 is also what a process that runs has for an exit code.
        for (const std::uint32_t code : {0U, 1U, 259U, 3010U, 0x80000000U, 0xFFFFFFFFU}) {
            EXPECT_EQ(End(Launch(Command(Self(), L"", code), flags)), code) << flags;
        }
    }
}

TEST_F(LiveProcessesTest, CommandLine_ArrivesUnchanged) {
    for (const wchar_t* text : {L"\"C:\\a b\\c d\" /S", L"  two  blanks\tand a tab ", L"\"\" \\\"x\\\\\" \"open",
                                L"%PATH% ^& | > \"&\"", L"\x4e2d\x6587 \x00e9\xd83d\xdda6"}) {
        EXPECT_EQ(End(Launch(Command(Self(), text, 5), kCreateNoWindow)), 5U) << testing::PrintToString(text);
    }
    const std::wstring copy = Self().substr(0, Self().rfind(L'\\')) + L"\\a b.exe";
    ASSERT_TRUE(::CopyFileW(Self().c_str(), copy.c_str(), FALSE));
    EXPECT_EQ(End(Launch(Command(copy, L"", 6), 0)), 6U) << "quoted path with a blank";
    EXPECT_TRUE(::DeleteFileW(copy.c_str()));
}

TEST_F(LiveProcessesTest, WhatCannotRun_IsAnErrorAndNoProcess) {
    const std::pair<const char16_t*, Win32Error> cases[] = {{u"C:\\RoundupMissing.exe /S", kErrorFileNotFound},
                                                            {u"\"C:\\Roundup Missing.exe\"", kErrorFileNotFound},
                                                            {u"RoundupMissing", kErrorFileNotFound},
                                                            {u"C:\\RoundupMissing\\a.exe", kErrorPathNotFound},
                                                            {u"C:\\windows\\win.ini", 193}};
    for (const auto& [command, error] : cases) {
        ProcessHandle process = 1;
        std::uint32_t id = 1;
        const Win32Error answer = m_processes.Start(command, 0, process, id);
        // The search for the end of a path may or may not tell that a folder on the way is missing.
        EXPECT_TRUE(answer == error || (error == kErrorPathNotFound && answer == kErrorFileNotFound)) << answer;
        EXPECT_EQ(process, 0U);
        EXPECT_EQ(id, 0U);
    }
}

// The first can only end once the second, which is started later, runs to its end.
TEST_F(LiveProcessesTest, TwoProcesses_Overlap) {
    constexpr const wchar_t* kName = L"Local\\RoundupProcessesTest";
    const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, kName));
    ::SetEnvironmentVariableW(kEvent, kName);
    const ProcessHandle first = Launch(Command(Self(), L"first", 7), 0);
    ::SetEnvironmentVariableW(kEvent, nullptr);
    EXPECT_EQ(End(Launch(Command(Self(), L"second", 8), 0)), 8U);
    std::uint32_t code = 0;
    EXPECT_EQ(m_processes.GetExitCode(first, code), kErrorSuccess);
    EXPECT_EQ(code, 259U) << "it runs still";
    ::SetEvent(event.Get());
    EXPECT_EQ(End(first), 7U);
}

TEST_F(LiveProcessesTest, Handles_AreGivenBack) {
    const auto count = [] {
        DWORD handles = 0;
        ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
        return handles;
    };
    const std::u16string command = Command(Self(), L"", 0);
    (void)End(Launch(command, kCreateNoWindow));
    const DWORD before = count();
    for (int i = 0; i < 5; ++i) (void)End(Launch(command, kCreateNoWindow));
    EXPECT_EQ(count(), before);
}

}  // namespace
}  // namespace roundup
