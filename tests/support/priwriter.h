// Writes indexes of package resources, as far as tests need them.
#pragma once

#include <string>
#include <vector>

namespace roundup {

// Items lie in a folder "Resources" of the schema; each has one text for each of the languages, an empty language being
// that of a candidate for none. The first language is the one that the package falls back to.
struct PriWriter {
    struct Item {
        std::string name;
        std::vector<std::u16string> texts;
    };
    std::vector<std::u16string> languages{};
    std::vector<Item> items{};
    bool extended = false;   // the longer schema, with names of two bytes a character
    bool large = false;      // the map's tables of 32 bits
    bool dataItems = false;  // texts in a section of their own

    std::string Write() const;
};

}  // namespace roundup
