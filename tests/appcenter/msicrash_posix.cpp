// The retry counts across processes that really die, and processes that count at the same time.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>

#include "appcenter/msicrash/msicrash.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"
#include "utility/formattext.h"

namespace roundup {
namespace {

constexpr char16_t kPackage[] = u"C:\\Windows\\Installer\\1a.msi";

class CrashRetryTest : public MachineTest {
  protected:
    CrashRetryTest() {
        m_host.Write("cache/note", "");
        builder.RealHostFolder(m_host.Text());
    }

    // Starts a process that does the work on a machine of its own, as a new run of the program would.
    pid_t StartProcess(const std::function<int()>& work) {
        const pid_t child = fork();
        if (child != 0) return child;
        signal(SIGABRT, SIG_DFL);
        Start();
        const int status = work();
        Stop();
        _exit(status);
    }
    static int WaitFor(pid_t process) {
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

    TempFolder m_host;
};

// One run that reads the package: 0 when it came through, 1 when the package was not read.
int ReadPackage() {
    const PackageAttempt attempt(GetCrashGuard(1), kPackage);
    return attempt.IsAllowed() ? 0 : 1;
}

TEST_F(CrashRetryTest, PackageThatKillsTheProcess_IsReadTwiceAndNeverAgain) {
    m_host.Write("cache/test/TestAppCrash.ini", "[enum]\r\n1A.MSI=1\r\n");
    const char* const kept = "[Crash]\r\nC:\\Windows\\Installer\\1a.msi=";
    EXPECT_EQ(WaitFor(StartProcess(ReadPackage)), -SIGABRT);
    EXPECT_EQ(m_host.Read("cache/EnumRetry.ini"), std::string(kept) + "1\r\n");
    EXPECT_EQ(WaitFor(StartProcess(ReadPackage)), -SIGABRT);
    EXPECT_EQ(m_host.Read("cache/EnumRetry.ini"), std::string(kept) + "2\r\n");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(WaitFor(StartProcess(ReadPackage)), 1);
        EXPECT_EQ(m_host.Read("cache/EnumRetry.ini"), std::string(kept) + "2\r\n");
    }
    // It stays away even when it would do no harm any more.
    std::filesystem::remove_all(m_host.Path() / "cache/test");
    EXPECT_EQ(WaitFor(StartProcess(ReadPackage)), 1);
}

// None may damage or lose what the others wrote.
TEST_F(CrashRetryTest, ProcessesThatCountAtOnce_LoseNothing) {
    std::vector<pid_t> processes;
    for (std::uint32_t number = 0; number < 4; ++number) {
        processes.push_back(StartProcess([number] {
            const std::u16string path = FormatText(u"C:\\Windows\\Installer\\package%0*d.msi", number * 7 + 1, number);
            for (std::uint32_t round = 0; round < 100; ++round) {
                if (!GetCrashGuard(1).SetRetryCount(path.c_str(), round)) return 1;
                if (GetCrashGuard(1).GetRetryCount(path.c_str()) != round + 1) return 2;
            }
            return 0;
        }));
    }
    for (const pid_t process : processes) EXPECT_EQ(WaitFor(process), 0);
    const std::string text = m_host.Read("cache/EnumRetry.ini");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5) << text;
    for (const char* const last : {"package0.msi=99", "package00000001.msi=99", "2.msi=99", "3.msi=99"}) {
        EXPECT_NE(text.find(last), std::string::npos) << text;
    }
}

}  // namespace
}  // namespace roundup
