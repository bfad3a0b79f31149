// Where the rows of a table lie, one behind the other in a few blocks.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace roundup {

// Memory stays in place until the arena is cleared or destroyed; nothing is given back before. Used by one thread.
class RowArena {
  public:
    // size bytes, aligned for any type; null when memory is short.
    void* Take(std::size_t size) noexcept;
    void Clear() noexcept;

  private:
    // Small for the many tables of a few rows, then as large as the rows need.
    static constexpr std::size_t kFirstBlock = 2048;
    static constexpr std::size_t kLargestBlock = 1U << 16U;

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::byte* m_next = nullptr;  // in the last block
    std::size_t m_left = 0;       // bytes from there on
    std::size_t m_blockSize = kFirstBlock;
};

}  // namespace roundup
