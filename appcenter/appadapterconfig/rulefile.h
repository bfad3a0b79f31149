// A rule file (.INC or .EXC) as it was read: its lines, before an application gives their paths a meaning.
//
// The format is described in docs/rules.md.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "utility/ownedstring.h"

namespace roundup {

// The numbers are those of the rule file format.
enum class RuleKeyword : std::uint32_t {
    Reg = 1,
    Dir = 2,
    File = 3,
    RegDir = 4,
    RegX = 5,
    Action = 6,
    HideAppName = 7,
    HideAppKey = 8,
    SubAppName = 9,
    SubAppKey = 10,
    AppendProc = 11,
};

struct RuleLine {
    RuleKeyword keyword;
    std::u16string_view value;  // lies in the file's text; blanks in front of it are gone
};

enum class RuleFileKind : std::uint8_t { Include, Exclude };

// Lines with no known keyword are left out. Read-only once made, so any number of threads may share it.
class RuleFile {
  public:
    explicit RuleFile(OwnedString text);
    RuleFile(const RuleFile&) = delete;
    RuleFile& operator=(const RuleFile&) = delete;

    const std::vector<RuleLine>& Lines() const noexcept { return m_lines; }

  private:
    OwnedString m_text;
    std::vector<RuleLine> m_lines;
};

}  // namespace roundup
