// Finds the program of a command line.
#pragma once

#include <string_view>

#include "utility/ownedstring.h"

namespace roundup {

// Splits a command line, quoted or not, into the paths that it names. The search ends at the first file that exists
// and is not the installer's own program, so there is at most one path. One object, one thread.
class CommandPaths {
  public:
    // Null or empty gives nothing. The text is not kept and not changed.
    explicit CommandPaths(const char16_t* commandLine);

    // The long path of the file; null when there is none. Good as long as the object.
    const char16_t* First() const noexcept { return m_path.Get(); }
    const char16_t* Last() const noexcept { return m_path.Get(); }

  private:
    bool Try(const char16_t* candidate);
    bool TryArguments(const char16_t* commandLine);
    bool TryArgument(const char16_t* argument, OwnedString& folder);
    bool TryWithoutSwitches(std::u16string_view commandLine);

    OwnedString m_path;
};

}  // namespace roundup
