// The environment variables of a machine that is not live.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "utility/casemap.h"

namespace roundup {

// Names ignore case. Filled by one thread, then read by any.
class Environment {
  public:
    void Set(std::u16string_view name, std::u16string_view value);
    // Nothing when the variable has a value already.
    void SetDefault(std::u16string_view name, std::u16string_view value);
    // Null for a variable that is not set.
    const std::u16string* Find(std::u16string_view name) const;
    // ExpandEnvironmentStringsW: each %name% of a variable that is set becomes its value, once; all else stays.
    std::u16string Expand(std::u16string_view text) const;

  private:
    std::unordered_map<std::u16string, std::u16string, NoCaseHash, NoCaseEqual> m_variables;
};

}  // namespace roundup
