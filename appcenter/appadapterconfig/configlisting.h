// The names in one folder, listed once.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "utility/casemap.h"

namespace roundup {

// Answers whether files exist without asking the machine for each: nearly every application is asked about, and nearly
// none has a file. A folder that is absent or unreadable holds nothing.
class ConfigListing {
  public:
    // Empty.
    ConfigListing() = default;
    // Lists the folder, with 32-bit redirection off. An empty path is no folder.
    explicit ConfigListing(std::u16string folder);

    // True when the folder holds a file or folder of that name. A name that can lie elsewhere, or can be a short one,
    // is asked of the machine.
    bool Has(std::u16string_view name) const;
    // False when no file of the folder has that name in front of its extension: cheaper than asking for each extension.
    bool MayHave(std::u16string_view nameWithoutExtension) const;
    // The path of a name in the folder.
    std::u16string PathOf(std::u16string_view name) const;

  private:
    std::u16string m_folder;
    std::unordered_set<std::u16string, NoCaseHash, NoCaseEqual> m_names;
    std::unordered_set<std::u16string, NoCaseHash, NoCaseEqual> m_stems;  // of m_names, up to the last dot
};

}  // namespace roundup
