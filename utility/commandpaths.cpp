// The text may be quoted or not, with blanks in the path or behind it, and the program may be a host that gets the
// real file as an argument. So candidates are tried until one is a file: the whole text, the arguments and what can be
// joined from them, and the text cut at each "/" from the end, for a path with blanks that switches follow.
//
// A machine has thousands of command lines, and nearly all of them are plain: no quotes but a pair around the program.
// Such a line is split here, in place, by the few rules of the platform that are left without quotes; the platform is
// asked about every other one.
//
//     MsiExec.exe /X{5B2F...}      the whole, "MsiExec.exe", "/X{5B2F...}"; cut at the "/" it is the program once more
//     "C:\Tool\uninst.exe" /S      the program
//     C:\My Tool\uninst.exe /S     the whole, "C:\My", "C:\My\Tool\uninst.exe", and at the cut the program
#include "utility/commandpaths.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/pathtext.h"
#include "utility/textscan.h"

namespace roundup {

namespace {

constexpr std::size_t kPathSize = 520;

constexpr bool IsSeparator(char16_t c) noexcept { return c == u'\\' || c == u'/'; }

std::size_t NameStart(std::u16string_view path) noexcept {
    std::size_t start = path.size();
    while (start != 0 && !IsSeparator(path[start - 1])) --start;
    return start;
}

// Where a rooted path begins in an argument such as /I:C:\x or path=C:\x: one character before the first ":" that a
// separator follows. The argument's length when there is none.
std::size_t FindRooted(std::u16string_view argument) {
    std::size_t colon = FindFirst(argument, u':');
    while (colon + 1 < argument.size() && !IsSeparator(argument[colon + 1])) {
        colon += 1 + FindFirst(argument.substr(colon + 1), u':');
    }
    if (colon + 1 >= argument.size()) return argument.size();
    return colon != 0 ? colon - 1 : 0;
}

// Splits a plain line in two: the program, in front of the first blank or in quotes, and what stands behind it, in
// which blanks alone part arguments and a backslash is nothing but itself. False for a line that is not plain.
// Control characters mean several things, and a blank at the start makes the program's name empty: such lines are left
// to the platform too.
bool SplitPlainLine(std::u16string_view line, std::u16string_view& program, std::u16string_view& rest) noexcept {
    const bool quoted = line.front() == u'"';
    if (quoted) line.remove_prefix(1);
    const std::size_t end = FindFirst(line, quoted ? u'"' : u' ');
    if (end == 0 || (quoted && end == line.size())) return false;
    program = line.substr(0, end);
    rest = line.substr(quoted ? end + 1 : end);
    if (!rest.empty() && rest.front() != u' ') return false;
    // Without a branch for each character, so that many are looked at at a time.
    char16_t found = 0;
    const auto mark = [&found](bool is) { found = static_cast<char16_t>(found | static_cast<char16_t>(is)); };
    for (const char16_t c : program) mark((c < u' ') | (c == u'"'));
    for (const char16_t c : rest) mark((c < u' ') | (c == u'"'));
    return found == 0;
}

std::u16string_view TakeArgument(std::u16string_view& rest) noexcept {
    rest.remove_prefix(std::min(rest.find_first_not_of(u' '), rest.size()));
    const std::u16string_view argument = rest.substr(0, FindFirst(rest, u' '));
    rest.remove_prefix(argument.size());
    return argument;
}

}  // namespace

CommandPaths::CommandPaths(TextOrNull commandLine) {
    const std::u16string_view line = commandLine.View();
    if (line.empty() || Try(line)) return;
    std::u16string_view program;
    std::u16string_view rest;
    const bool isPlain = SplitPlainLine(line, program, rest);
    if (isPlain ? TryPlainLine(program, rest) : TryPlatformSplit(line)) return;
    TryWithoutSwitches(line, isPlain ? program : std::u16string_view());
}

bool CommandPaths::Try(std::u16string_view candidate) {
    // A longer text has no long path that fits, and a hostile line brings thousands of them. No name has a quote.
    if (candidate.empty() || candidate.size() >= kPathSize || candidate.front() == u'"') return false;
    char16_t path[kPathSize];
    std::memcpy(path, candidate.data(), candidate.size() * sizeof(char16_t));
    path[candidate.size()] = u'\0';
    if (!IsFilePath(path)) return false;
    char16_t longPath[kPathSize];
    const std::u16string_view text(longPath, GetLongPath(path, longPath, kPathSize, &m_isLong));
    const std::u16string_view name = text.substr(NameStart(text));
    if (name.empty() || EqualsNoCase(name, u"MSIEXEC.EXE")) return false;
    return AssignString(m_path, text);
}

bool CommandPaths::TryPlainLine(std::u16string_view program, std::u16string_view rest) {
    std::u16string_view folder;
    for (std::u16string_view argument = program; !argument.empty(); argument = TakeArgument(rest)) {
        if (TryArgument(argument, folder)) return true;
    }
    return false;
}

bool CommandPaths::TryPlatformSplit(std::u16string_view commandLine) {
    const std::u16string line(commandLine);
    std::vector<std::u16string> arguments;
    if (!CurrentMachine().Shell().SplitCommandLine(line.c_str(), arguments)) return false;
    std::u16string_view folder;
    return std::any_of(arguments.begin(), arguments.end(),
                       [&](const std::u16string& argument) { return TryArgument(argument, folder); });
}

// folder is the first rooted text that was no file: the first part of a path with blanks, or a host's own folder, in
// which later arguments may lie. It stays the same from then on.
bool CommandPaths::TryArgument(std::u16string_view argument, std::u16string_view& folder) {
    if (Try(argument)) return true;
    if (folder.empty()) {
        const std::size_t start = FindRooted(argument);
        if (start == argument.size()) return false;
        if (start != 0 && Try(argument.substr(start))) return true;
        folder = argument.substr(start);
        if (IsSeparator(folder.back())) folder.remove_suffix(1);
        return false;
    }
    if (argument.empty() || IsSeparator(argument.front())) return false;
    if (folder.size() + 1 + argument.size() >= kPathSize) return false;
    char16_t joined[kPathSize];
    char16_t* const end = std::copy(folder.begin(), folder.end(), joined);
    *end = u'\\';
    return Try({joined, std::copy(argument.begin(), argument.end(), end + 1)});
}

// tried is a candidate that failed already.
bool CommandPaths::TryWithoutSwitches(std::u16string_view commandLine, std::u16string_view tried) {
    std::u16string_view text = commandLine;
    for (;;) {
        const std::size_t end = EndOfLast(text, u'/');
        if (end == 0) return false;
        text = text.substr(0, text.substr(0, end - 1).find_last_not_of(u' ') + 1);
        if (!EqualsExactly(text, tried) && Try(text)) return true;
    }
}

}  // namespace roundup
