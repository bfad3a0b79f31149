// Finds the program of a command line.
#pragma once

#include <string_view>
#include <utility>

#include "utility/ownedstring.h"

namespace roundup {

// Splits a command line, quoted or not, into the paths that it names. The search ends at the first file that exists
// and is not the installer's own program, so there is at most one path. One object, one thread.
class CommandPaths {
  public:
    // Null or empty gives nothing. The text is not kept and not changed.
    explicit CommandPaths(TextOrNull commandLine);

    // The long path of the file; null when there is none. Good as long as the object.
    const char16_t* First() const noexcept { return m_path.Get(); }
    const char16_t* Last() const noexcept { return m_path.Get(); }
    // First, to keep; the object has no path from then on.
    OwnedString Take() noexcept { return std::move(m_path); }
    // False when the path stands as it was written, since its long form could not be had.
    bool IsLong() const noexcept { return m_isLong; }

  private:
    bool Try(std::u16string_view candidate);
    bool TryArgument(std::u16string_view argument, std::u16string_view& folder);
    bool TryPlainLine(std::u16string_view program, std::u16string_view rest);
    bool TryPlatformSplit(std::u16string_view commandLine);
    bool TryWithoutSwitches(std::u16string_view commandLine, std::u16string_view tried);

    OwnedString m_path;
    bool m_isLong = false;
};

}  // namespace roundup
