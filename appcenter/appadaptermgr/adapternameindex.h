// Finds the adapters whose names occur in a text.
#pragma once

#include <bitset>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace roundup {

// There are at most a hundred adapters, and nearly every application has to do with none of them; so a text is read
// once, whatever the number of names, and compared at each place with those names alone that begin with its character.
class AdapterNameIndex {
  public:
    // The text must outlive the object. Numbers are small and dense. An empty name occurs nowhere.
    void Add(std::u16string_view name, std::size_t number);
    // Sets found[number] for each name that occurs in the text, ignoring case.
    void Find(std::u16string_view text, std::vector<bool>& found) const;

  private:
    struct Name {
        std::u16string_view text;
        std::size_t number;
    };

    std::bitset<0x10000> m_first;  // upper-cased characters that begin a name
    std::unordered_map<char16_t, std::vector<Name>> m_byFirst;
};

}  // namespace roundup
