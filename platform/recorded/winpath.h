// The text rules of Windows paths: what a path means before any file is looked at.
#pragma once

#include <string>
#include <string_view>

#include "platform/win32.h"

namespace roundup {

// The longest path that the platform takes, in characters.
inline constexpr std::size_t kLongestPath = 32767;

// A path with a drive letter, in the one form that lookups work on.
struct WinPath {
    // "C:\" or "C:\one\two": a backslash between parts, none at the end but that of the root.
    std::u16string text;
    bool endsInSeparator = false;  // the path was written with a separator at its end, so it can only be a folder

    char16_t Drive() const noexcept { return text[0]; }
    // The parts behind the root, "one\two".
    std::u16string_view Parts() const noexcept { return std::u16string_view(text).substr(3); }
};

// Reads a path as the platform does ("File path formats on Windows systems", "Naming Files, Paths, and Namespaces"):
// "/" separates too, separators in a row count once, "." and ".." are worked out in the text and end at the root, a
// part loses one period at its end, the last part all periods and blanks; behind "\\?\" the text is taken as it
// stands. Error 3 for a path that is relative, relative to a drive, or on no drive at all; 123 for a text that can
// be no path.
Win32Error ParsePath(std::u16string_view path, WinPath& parsed);

// True for a path that has neither a drive with its root nor one of the prefixes "\\\\?\\", "\\\\.\\" and "\\??\\", as
// the first two characters tell: ParsePath takes none of these.
constexpr bool HasNoRoot(const char16_t* path) noexcept {
    const auto isSeparator = [](char16_t c) { return c == u'\\' || c == u'/'; };
    if (path[0] == u'\0') return true;
    return path[1] != u':' && !(isSeparator(path[0]) && (isSeparator(path[1]) || path[1] == u'?'));
}

// GetFullPathNameW: the same rules, also for network paths, with a separator at the end kept. Empty for a path that
// is relative, since a machine that is not live has no current folder.
std::u16string FullPathText(std::u16string_view path);

// A character that no name of a file can hold: < > : " / \ | ? * and those below the blank.
bool IsForbiddenInName(char16_t c) noexcept;

// Takes the first part off rest, up to its first backslash.
std::u16string_view TakePart(std::u16string_view& rest) noexcept;

}  // namespace roundup
