// The program at a terminal, and interrupted. Pseudo-terminals and signals are this system's own.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "host/textout.h"
#include "tests/host/runprogram.h"
#include "tests/support/machinebuilder.h"

namespace roundup {
namespace {

std::u16string Entry(int number) {
    const std::string digits = std::to_string(number);
    return u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\App" +
           std::u16string(digits.begin(), digits.end());
}

void MakeMachine(const std::string& folder, int entries) {
    MachineBuilder builder;
    for (int i = 0; i < entries; ++i) {
        builder.Text(Entry(i), u"DisplayName", u"A rather long name of an application that fills its column")
            .Text(Entry(i), u"Publisher", u"A publisher with a name that is long as well")
            .Text(Entry(i), u"LocalPackage", u"C:\\Windows\\Installer\\1.msi")
            .Text(Entry(i), u"InstallDate", u"20240301");
    }
    builder.WriteTo(folder);
}

struct Session {
    int status = 0;
    std::string screen;
};

// Runs `roundup list` at a terminal of that many columns.
Session RunAtTerminal(const std::string& machine, unsigned short columns, bool colour) {
    winsize size = {};
    size.ws_col = columns;
    size.ws_row = 24;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        setenv("TERM", "xterm", 1);
        colour ? unsetenv("NO_COLOR") : setenv("NO_COLOR", "1", 1);
        execl(ROUNDUP_PROGRAM, "roundup", "list", "--machine", machine.c_str(), nullptr);
        _exit(127);
    }
    Session session;
    char block[4096];
    for (ssize_t got = 0; (got = read(terminal, block, sizeof block)) > 0;) {
        session.screen.append(block, static_cast<std::size_t>(got));
    }
    waitpid(child, &session.status, 0);
    close(terminal);
    return session;
}

std::vector<std::string> Lines(const std::string& screen) {
    // What stands in front of the bar's removal was overwritten.
    const std::string shown = screen.substr(screen.rfind("\x1b[K") + 3);
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < shown.size();) {
        const std::size_t end = std::min(shown.find("\r\n", start), shown.size());
        lines.push_back(shown.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

TEST(Terminal, ListAtATerminal_DrawsTheBarAndKeepsToItsWidth) {
    const TempFolder folder;
    MakeMachine(folder / "machine", 3);
    for (const int columns : {40, 80, 100, 200}) {
        const Session session = RunAtTerminal(folder / "machine", static_cast<unsigned short>(columns), false);
        EXPECT_EQ(session.status, 0);
        EXPECT_NE(session.screen.find("] 100%"), std::string::npos);
        for (const std::string& line : Lines(session.screen))
            EXPECT_LE(host::Columns(line), static_cast<std::size_t>(columns)) << line;
        EXPECT_NE(session.screen.find("App2"), std::string::npos) << "the key is what other commands take";
        EXPECT_EQ(session.screen.find("\x1b[1m"), std::string::npos) << "no colour against NO_COLOR";
    }
    EXPECT_NE(RunAtTerminal(folder / "machine", 80, true).screen.find("\x1b[1m"), std::string::npos);
}

// Runs the command on the machine in the folder, its own temporary folder too, and interrupts it once its progress has
// begun anew so many times. Answers its status, and what it wrote to standard error.
int RunInterrupted(const TempFolder& folder, const std::vector<std::string>& command, int phases, std::string& error) {
    int pipes[2];
    if (pipe(pipes) != 0) return -1;
    const std::string machine = folder / "machine";
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipes[1], STDERR_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        setenv("TMPDIR", folder.Path().c_str(), 1);
        std::vector<const char*> arguments{"roundup"};
        for (const std::string& word : command) arguments.push_back(word.c_str());
        arguments.insert(arguments.end(), {"--progress", "plain", "--machine", machine.c_str(), nullptr});
        execv(ROUNDUP_PROGRAM, const_cast<char* const*>(arguments.data()));
        _exit(127);
    }
    close(pipes[1]);
    bool sent = false;
    char block[256];
    for (ssize_t got = 0; (got = read(pipes[0], block, sizeof block)) > 0;) {
        error.append(block, static_cast<std::size_t>(got));
        const std::size_t loaded = error.find("100\n");
        const bool begun = phases == 0 || (loaded != std::string::npos && loaded + 4 < error.size());
        if (begun && !sent) sent = kill(child, SIGINT) == 0;
    }
    close(pipes[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Terminal, CtrlC_CancelsTheLoadOrTheGatherAndEndsWith130) {
    const struct {
        std::vector<std::string> command;
        int phases;
    } cases[] = {{{"list"}, 0}, {{"gather", "--all", "--jobs", "1"}, 1}};
    for (const auto& one : cases) {
        const TempFolder folder;
        MakeMachine(folder / "machine", 20'000);
        std::string error;
        EXPECT_EQ(RunInterrupted(folder, one.command, one.phases, error), 130);
        EXPECT_NE(error.find("cancelled"), std::string::npos)
            << error.substr(error.size() - std::min<std::size_t>(error.size(), 200));
        // The machine that was made, the log, and the folders that temporary files were in.
        std::filesystem::remove_all(folder / "machine");
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
            EXPECT_TRUE(entry.is_directory() || entry.path().extension() == ".log") << entry.path();
        }
    }
}

}  // namespace
}  // namespace roundup
