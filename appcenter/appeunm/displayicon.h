// The value "DisplayIcon" of an Uninstall entry: a path, which may be quoted, and the number of an icon in that file.
#pragma once

#include <cstdint>
#include <string_view>

namespace roundup {

struct DisplayIcon {
    std::u16string_view path;  // part of the text it was taken from; may be empty
    std::int32_t index = 0;    // never negative: writers put a minus sign before resource numbers too
};

// Takes the text apart. The last comma ends the path wherever it stands behind it, also behind the closing quote;
// without one the index is 0. A number that does not fit becomes the largest one.
DisplayIcon ParseDisplayIcon(std::u16string_view text) noexcept;

}  // namespace roundup
