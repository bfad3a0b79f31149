#include "utility/commandpaths.h"

#include <string>
#include <vector>

#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/pathtext.h"

namespace roundup {

namespace {

constexpr std::size_t kPathSize = 520;

constexpr bool IsSeparator(char16_t c) noexcept { return c == u'\\' || c == u'/'; }

// Where a rooted path begins in an argument such as /I:C:\x or path=C:\x: one character before the first ":" that a
// separator follows. The argument's length when there is none.
std::size_t FindRooted(std::u16string_view argument) {
    for (std::size_t i = 0; i + 1 < argument.size(); ++i) {
        if (argument[i] == u':' && IsSeparator(argument[i + 1])) return i != 0 ? i - 1 : 0;
    }
    return argument.size();
}

}  // namespace

// The text may be quoted or not, with blanks in the path or behind it, and the program may be a host that gets the
// real file as an argument. So candidates are tried until one is a file: the whole text, the arguments and what can be
// joined from them, and the text cut at each "/" from the end, for a path with blanks that switches follow.
CommandPaths::CommandPaths(const char16_t* commandLine) {
    if (commandLine == nullptr || commandLine[0] == u'\0') return;
    if (Try(commandLine) || TryArguments(commandLine)) return;
    TryWithoutSwitches(commandLine);
}

bool CommandPaths::Try(const char16_t* candidate) {
    // A longer text has no long path that fits, and a hostile line brings thousands of them.
    if (candidate == nullptr || std::u16string_view(candidate).size() >= kPathSize || !IsFilePath(candidate))
        return false;
    char16_t longPath[kPathSize];
    GetLongPath(candidate, longPath, kPathSize);
    std::u16string_view name = longPath;
    name.remove_prefix(name.find_last_of(u"\\/") + 1);
    if (name.empty() || EqualsNoCase(name, u"MSIEXEC.EXE")) return false;
    return AssignString(m_path, longPath);
}

bool CommandPaths::TryArguments(const char16_t* commandLine) {
    std::vector<std::u16string> arguments;
    if (!CurrentMachine().Shell().SplitCommandLine(commandLine, arguments)) return false;
    OwnedString folder;
    for (const std::u16string& argument : arguments) {
        if (TryArgument(argument.c_str(), folder)) return true;
    }
    return false;
}

// folder is the first rooted text that was no file: the first part of a path with blanks, or a host's own folder, in
// which later arguments may lie. It stays the same from then on.
bool CommandPaths::TryArgument(const char16_t* argument, OwnedString& folder) {
    if (Try(argument)) return true;
    std::u16string_view text = argument;
    if (folder.IsEmpty()) {
        const std::size_t start = FindRooted(text);
        if (start == text.size()) return false;
        if (start != 0 && Try(argument + start)) return true;
        text.remove_prefix(start);
        if (IsSeparator(text.back())) text.remove_suffix(1);
        AssignString(folder, text);
        return false;
    }
    if (!text.empty() && IsSeparator(text.front())) return false;
    OwnedString joined;
    return AssignConcat3(joined, folder, u"\\", text) && Try(joined.Get());
}

bool CommandPaths::TryWithoutSwitches(std::u16string_view commandLine) {
    OwnedString text(commandLine);
    for (;;) {
        const std::size_t slash = text.View().rfind(u'/');
        if (slash == std::u16string_view::npos) return false;
        text.Truncate(text.View().substr(0, slash).find_last_not_of(u' ') + 1);
        // Try measures its text, which for each cut of a very long one would take too long.
        if (text.Length() < kPathSize && Try(text.Get())) return true;
    }
}

}  // namespace roundup
