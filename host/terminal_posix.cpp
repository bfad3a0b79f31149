#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "host/terminal.h"

namespace roundup::host {

namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch lock-free atomics alone");

extern "C" void OnInterrupt(int) {
    g_interrupted.store(true);
    // A second Ctrl-C is for who cannot wait: it ends the process as it does by default.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(SIGINT, &action, nullptr);
}

int Descriptor(Stream stream) { return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO; }

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + (argc > 0 ? argc : 0)};
}

void PrepareStreams() {
    // For wcwidth, whose answers follow the locale's characters.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) std::setlocale(LC_CTYPE, "");
}

bool IsTerminal(Stream stream) { return isatty(Descriptor(stream)) != 0; }

std::optional<std::size_t> TerminalWidth(Stream stream) {
    if (!IsTerminal(stream)) return std::nullopt;
    winsize size = {};
    if (ioctl(Descriptor(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    if (const char* columns = std::getenv("COLUMNS")) {
        const long count = std::strtol(columns, nullptr, 10);
        if (count > 0) return static_cast<std::size_t>(count);
    }
    return 80;
}

bool WantsColour(Stream stream) {
    const char* refused = std::getenv("NO_COLOR");
    if (refused != nullptr && *refused != '\0') return false;
    const char* kind = std::getenv("TERM");
    return IsTerminal(stream) && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

std::size_t CharacterColumns(char32_t character) {
    const int columns = wcwidth(static_cast<wchar_t>(character));
    return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

void CatchInterrupts() {
    struct sigaction action = {};
    action.sa_handler = OnInterrupt;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

bool Interrupted() { return g_interrupted.load(); }

}  // namespace roundup::host
