// Texts that live as long as their owner, one behind the other in a few blocks.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace roundup {

// Texts stay where they are, zero-terminated, until the arena is cleared or destroyed. Used by one thread at a time.
class TextArena {
  public:
    // Writable room for a text of so many characters and its terminator, where the next text will stand; null when
    // memory is short. What was written there is lost unless Keep follows.
    char16_t* Room(std::size_t length) noexcept;
    // Keeps the first characters of the room that was last asked for; length is at most what it was asked for.
    std::u16string_view Keep(std::size_t length) noexcept;
    // A copy of the text. Throws what the standard library does when memory is short.
    std::u16string_view Copy(std::u16string_view text);
    void Clear() noexcept;

  private:
    struct Block {
        std::unique_ptr<char16_t[]> text;
        std::size_t size = 0;
        std::size_t used = 0;
    };
    // Small for the many that hold little, then as large as what they hold needs.
    static constexpr std::size_t kFirstBlock = 2048;
    static constexpr std::size_t kLargestBlock = 1U << 15U;

    std::vector<Block> m_blocks;  // the last one is being filled
};

}  // namespace roundup
