// What rules are lists of: registry items, and texts that compare ignoring case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {

// Numbers of the predefined keys as rule items and stored records have them: 32 bits, winreg.h.
struct RuleRoot {
    static constexpr std::uint32_t kClassesRoot = 0x80000000U;
    static constexpr std::uint32_t kCurrentUser = 0x80000001U;
    static constexpr std::uint32_t kLocalMachine = 0x80000002U;
    static constexpr std::uint32_t kUsers = 0x80000003U;
    static constexpr std::uint32_t kCurrentConfig = 0x80000005U;
};

// A key with all it holds, or, when the path holds two backslashes in a row, the value whose key stands before them
// and whose name stands after.
struct RuleRegItem {
    std::uint32_t root = 0;
    std::uint32_t bRedirection = 0;
    OwnedString path;
};

// Texts in the order in which they came, each once. An element stays where it is until the list goes.
class RuleTexts {
  public:
    // Adds a copy. False, and nothing changed, when the text is empty or there already, or when memory is short.
    bool Add(std::u16string_view text);
    bool Contains(std::u16string_view text) const noexcept { return m_index.contains(text); }

    bool empty() const noexcept { return m_texts.empty(); }
    std::size_t size() const noexcept { return m_texts.size(); }
    const OwnedString& operator[](std::size_t at) const noexcept { return m_texts[at]; }
    std::vector<OwnedString>::const_iterator begin() const noexcept { return m_texts.begin(); }
    std::vector<OwnedString>::const_iterator end() const noexcept { return m_texts.end(); }

  private:
    std::vector<OwnedString> m_texts;
    // The blocks of the texts, which stay where they are when the vector grows.
    std::unordered_set<std::u16string_view, NoCaseHash, NoCaseEqual> m_index;
};

// Registry items in the order in which they came. Two are the same when root and path are; bRedirection takes no part.
class RuleRegItems {
  public:
    // As RuleTexts::Add.
    bool Add(std::uint32_t root, std::u16string_view path, std::uint32_t bRedirection = 0);
    bool Contains(std::uint32_t root, std::u16string_view path) const noexcept {
        return m_index.contains({root, path});
    }

    bool empty() const noexcept { return m_items.empty(); }
    std::size_t size() const noexcept { return m_items.size(); }
    const RuleRegItem& operator[](std::size_t at) const noexcept { return m_items[at]; }
    std::vector<RuleRegItem>::const_iterator begin() const noexcept { return m_items.begin(); }
    std::vector<RuleRegItem>::const_iterator end() const noexcept { return m_items.end(); }

  private:
    struct Name {
        std::uint32_t root;
        std::u16string_view path;
    };
    struct NameHash {
        std::size_t operator()(const Name& name) const noexcept { return HashNoCase(name.path) ^ name.root; }
    };
    struct NameEqual {
        bool operator()(const Name& a, const Name& b) const noexcept {
            return a.root == b.root && EqualsNoCase(a.path, b.path);
        }
    };

    std::vector<RuleRegItem> m_items;
    std::unordered_set<Name, NameHash, NameEqual> m_index;
};

}  // namespace roundup
