// What the program needs of the console, by the C run time alone: the Windows headers stay below platform/windows.
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "host/terminal.h"
#include "utility/utf.h"

// Declared by the run time's internal header alone: the arguments and the environment as wide texts.
extern "C" {
struct WideStartup {
    int newMode;
};
int __cdecl __wgetmainargs(int* count, wchar_t*** arguments, wchar_t*** environment, int expandWildcards,
                           WideStartup* startup);
}

namespace roundup::host {

namespace {

std::atomic<bool> g_interrupted{false};

// The run time resets the handler before it calls it, so a second Ctrl-C ends the process.
extern "C" void OnInterrupt(int) { g_interrupted.store(true); }

std::FILE* FileOf(Stream stream) { return stream == Stream::Output ? stdout : stderr; }

struct Range {
    char32_t first;
    char32_t last;
};

constexpr bool operator<(const Range& range, char32_t character) { return range.last < character; }

// Marks that combine with the character before them, of the scripts in common use (UnicodeData.txt, categories Mn, Me,
// Cf), and wide characters (EastAsianWidth.txt, W and F), in blocks.
constexpr std::array kCombining = {
    Range{0x0300, 0x036F}, Range{0x0483, 0x0489}, Range{0x0591, 0x05BD}, Range{0x0610, 0x061A}, Range{0x064B, 0x065F},
    Range{0x06D6, 0x06DC}, Range{0x0E34, 0x0E3A}, Range{0x0E47, 0x0E4E}, Range{0x1AB0, 0x1AFF}, Range{0x1DC0, 0x1DFF},
    Range{0x200B, 0x200F}, Range{0x20D0, 0x20F0}, Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}};
constexpr std::array kWide = {Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},
                              Range{0x3400, 0x4DBF},   Range{0x4E00, 0x9FFF},   Range{0xA000, 0xA4CF},
                              Range{0xAC00, 0xD7A3},   Range{0xF900, 0xFAFF},   Range{0xFE30, 0xFE6F},
                              Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},   Range{0x1F300, 0x1F64F},
                              Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF}, Range{0x20000, 0x3FFFD}};

template <std::size_t N>
bool IsIn(const std::array<Range, N>& ranges, char32_t character) {
    const auto found = std::lower_bound(ranges.begin(), ranges.end(), character);
    return found != ranges.end() && found->first <= character;
}

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    // argv is in the system's code page; the run time keeps the whole texts as well.
    int count = 0;
    wchar_t** wide = nullptr;
    wchar_t** environment = nullptr;
    WideStartup mode = {0};
    std::vector<std::string> arguments;
    if (__wgetmainargs(&count, &wide, &environment, 0, &mode) != 0) {
        arguments.assign(argv + std::min(argc, 1), argv + argc);
        return arguments;
    }
    for (int i = 1; i < count; ++i) {
        const std::wstring_view text(wide[i]);
        arguments.push_back(ToUtf8(std::u16string(text.begin(), text.end())));
    }
    return arguments;
}

void PrepareStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

bool IsTerminal(Stream stream) { return _isatty(_fileno(FileOf(stream))) != 0; }

std::optional<std::size_t> TerminalWidth(Stream stream) {
    if (!IsTerminal(stream)) return std::nullopt;
    if (const char* columns = std::getenv("COLUMNS")) {
        const long count = std::strtol(columns, nullptr, 10);
        if (count > 0) return static_cast<std::size_t>(count);
    }
    return 80;
}

// A console takes colours only after it was told to, which the terminals that set TERM have done.
bool WantsColour(Stream stream) {
    const char* refused = std::getenv("NO_COLOR");
    const bool allowed = refused == nullptr || *refused == '\0';
    return allowed && IsTerminal(stream) && std::getenv("TERM") != nullptr;
}

std::size_t CharacterColumns(char32_t character) {
    if (character < 0x300) return 1;
    if (IsIn(kCombining, character)) return 0;
    return IsIn(kWide, character) ? 2 : 1;
}

void CatchInterrupts() { std::signal(SIGINT, OnInterrupt); }

bool Interrupted() { return g_interrupted.load(); }

}  // namespace roundup::host
