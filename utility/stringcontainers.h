// Containers of texts that own copies. Names and paths in them compare ignoring case.
//
// They have no lock: whoever shares one guards it. What the standard containers throw for want of memory goes through.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {

// The order of lower-cased texts. Null and empty are one key, which comes first.
struct CStringLess {
    using is_transparent = void;
    bool operator()(std::u16string_view a, std::u16string_view b) const noexcept { return CompareNoCase(a, b) < 0; }
};

class CStringVec : public std::vector<OwnedString> {
  public:
    CStringVec() = default;
    CStringVec(CStringVec&&) noexcept = default;
    CStringVec& operator=(CStringVec&&) noexcept = default;
    virtual ~CStringVec() = default;

    void Clear() noexcept { clear(); }
    // Appends a copy. False for null.
    bool Add(TextOrNull text);
};

class CStringSet : public std::set<OwnedString, CStringLess> {
  public:
    CStringSet() = default;
    CStringSet(CStringSet&&) = default;
    CStringSet& operator=(CStringSet&&) = default;
    virtual ~CStringSet() = default;

    void Clear() noexcept { clear(); }
    void Remove(TextOrNull text);
    // Keeps the first of equal texts. False for null, true otherwise.
    bool Add(TextOrNull text);
    // False for null.
    bool Contains(TextOrNull text) const;
};

class CStringMap : public std::map<OwnedString, OwnedString, CStringLess> {
  public:
    CStringMap() = default;
    CStringMap(CStringMap&&) = default;
    CStringMap& operator=(CStringMap&&) = default;
    virtual ~CStringMap() = default;

    void Clear() noexcept { clear(); }
    // False when key or value is null or empty. A key that is there keeps its value, and the answer says whether that
    // is the same text as the new one, ignoring case.
    bool Add(TextOrNull key, TextOrNull value);
    // The value, which belongs to the map; null when the key is null, empty or not there.
    const OwnedString* Find(TextOrNull key) const;
};

}  // namespace roundup
