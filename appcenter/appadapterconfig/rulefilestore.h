// The Config folder beside the host: its folders are listed once for a load, each rule file is read once.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "appcenter/appadapterconfig/configlisting.h"
#include "appcenter/appadapterconfig/rulefile.h"
#include "utility/casemap.h"
#include "utility/locks.h"

namespace roundup {

// "%s\Config" of the host's folder; empty when that is not known.
std::u16string ConfigFolder();

// What a question about one name found.
struct FoundRuleFile {
    bool exists = false;                   // also when nothing could be read
    std::shared_ptr<const RuleFile> file;  // null when there is nothing to read
};

// ProcessWide<RuleFileStore>() is the one of the machine. Every thread may ask at any time.
class RuleFileStore {
  public:
    // False when there is no rule file of either name: what nearly every application is told, and so asked first.
    bool MayHave(std::u16string_view name, std::u16string_view shorterName);
    // The rule file "%s.INC" or "%s.EXC" of that name.
    FoundRuleFile Find(std::u16string_view name, RuleFileKind kind);
    // True when the Config folder holds a file of that name.
    bool HasConfigFile(std::u16string_view fileName);
    // The path of "%s.ini" in the folder Config\Compatibility; empty when there is no such file.
    std::u16string CompatibilityFile(std::u16string_view name);

    // Forgets everything, so that the next question sees what the folders hold then. For the start of a load; those
    // that hold a file keep theirs.
    void Renew();
    // Tells one period between two calls of Renew from another; never 0.
    std::uint32_t Generation();

  private:
    ConfigListing& Config();

    CriticalSection m_lock;
    // Guarded by m_lock.
    std::uint32_t m_generation = 1;
    std::optional<ConfigListing> m_config;
    std::optional<ConfigListing> m_compatibility;
    // By file name, each file that was asked for and exists.
    std::unordered_map<std::u16string, std::shared_ptr<const RuleFile>, NoCaseHash, NoCaseEqual> m_files;
};

}  // namespace roundup
