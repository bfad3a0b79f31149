// Names that stand in memory once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/recorded/registry/arena.h"

namespace roundup {

// Names of values repeat from key to key. One that is much longer than those is kept apart. Throws std::bad_alloc.
class SharedNames {
  public:
    // The name in the arena, which must be the same for all calls; hash is its hash by upper-cased characters.
    const char16_t* Get(Arena& arena, std::u16string_view name, std::uint32_t hash);

  private:
    struct Name {
        const char16_t* text = nullptr;
        std::uint32_t length = 0;
        std::uint32_t hash = 0;
    };

    void Grow();

    std::vector<Name> m_names;  // a power of two places, at most half of them taken, probed in a row
    std::size_t m_count = 0;
};

}  // namespace roundup
