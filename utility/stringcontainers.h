// Containers of texts that own copies. Names and paths in them compare ignoring case.
//
// They have no lock: whoever shares one guards it. What the standard containers throw for want of memory goes through.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string_view>
#include <type_traits>
#include <vector>

#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {

// A text that is only read, or null: what the containers' operations take. Made from a pointer, an OwnedString, or
// anything that converts to a view.
class TextOrNull {
  public:
    TextOrNull(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
    template <class T>
    requires std::is_convertible_v<const T&, std::u16string_view> TextOrNull(const T& text)
    noexcept {  // NOLINT(google-explicit-constructor)
        if constexpr (std::is_pointer_v<std::decay_t<T>>) {
            const char16_t* const pointer = text;
            m_isNull = pointer == nullptr;
            if (!m_isNull) m_view = pointer;
        } else if constexpr (std::is_same_v<T, OwnedString>) {
            m_isNull = text.IsNull();
            m_view = text;
        } else {
            m_isNull = false;
            m_view = text;
        }
    }

    bool IsNull() const noexcept { return m_isNull; }
    std::u16string_view View() const noexcept { return m_view; }

  private:
    std::u16string_view m_view;
    bool m_isNull = true;
};

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
    // False when key or value is empty. A key that is there keeps its value, and the answer says whether that is the
    // same text as the new one, ignoring case.
    bool Add(std::u16string_view key, std::u16string_view value);
    // The value, which belongs to the map; null when the key is empty or not there.
    const OwnedString* Find(std::u16string_view key) const;
};

}  // namespace roundup
