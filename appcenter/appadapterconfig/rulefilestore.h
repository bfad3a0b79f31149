// The rule files of the Config folder beside the host: listed once, each read once, shared by all that ask.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

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
    // The rule file of that name ("%s.INC", "%s.EXC"). Names that can lie elsewhere than in the folder itself, or be
    // short ones, are asked of the machine, all others of the listing.
    FoundRuleFile Find(std::u16string_view name, RuleFileKind kind);
    // True when the folder holds a file of that name, as the listing has it.
    bool HasConfigFile(std::u16string_view name);
    // Forgets all files, so that the next question sees what the folder holds then. For the start of a load; those
    // that still hold a file keep theirs.
    void Renew();
    // Grows with each Renew.
    std::uint32_t Generation();

  private:
    struct Slot {
        bool exists = false;
        bool read = false;
        std::shared_ptr<const RuleFile> file;
    };
    struct NamedFiles {
        Slot include;
        Slot exclude;
    };
    template <class T>
    using ByName = std::unordered_map<std::u16string, T, NoCaseHash, NoCaseEqual>;

    void List();
    void Note(std::u16string_view fileName);
    // Null when there is no such file.
    Slot* SlotOf(std::u16string_view name, RuleFileKind kind);

    CriticalSection m_lock;
    // Guarded by m_lock.
    bool m_listed = false;
    std::uint32_t m_generation = 1;
    std::u16string m_folder;
    ByName<NamedFiles> m_rules;  // by name without extension
    ByName<bool> m_others;       // by file name: every other file
};

}  // namespace roundup
