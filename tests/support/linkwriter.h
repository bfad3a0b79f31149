// Writes shell link files, as far as tests need them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "utility/guid.h"

namespace roundup {

// Parts that are empty are left out.
struct LinkWriter {
    std::u16string idListPath{};  // "C:\..."; names are stored in short form and, in the extension, in this one
    std::string localPath{};      // one byte a character
    std::u16string wideLocalPath{};
    std::string share{}, suffix{};
    std::u16string description{}, workingDirectory{}, arguments{}, iconPath{};
    std::u16string environmentPath{}, environmentIcon{}, descriptor{};
    std::int32_t iconIndex = 0;
    std::uint16_t hotkey = 0;
    std::int32_t showCommand = 1;
    std::uint32_t moreFlags = 0;
    bool unicode = true;

    std::string Write() const;

    // The descriptor of an advertised link; without a component when that is empty. Codes in braces.
    static std::u16string Descriptor(std::u16string_view product, std::u16string_view feature,
                                     std::u16string_view component);
};

}  // namespace roundup
