#include "msianalyzer/rowarena.h"

#include <algorithm>
#include <new>
#include <utility>

#include "utility/boundary.h"

namespace roundup {

void* RowArena::Take(std::size_t size) noexcept {
    constexpr std::size_t kAlignment = alignof(std::max_align_t);
    size = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (size > m_left) {
        const std::size_t blockSize = std::max(m_blockSize, size);
        std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[blockSize]);
        if (block == nullptr) return nullptr;
        std::byte* const start = block.get();
        const bool added = AtBoundary([&] { return m_blocks.push_back(std::move(block)), true; }, [] { return false; });
        if (!added) return nullptr;
        m_next = start;
        m_left = blockSize;
        m_blockSize = std::min(m_blockSize * 2, kLargestBlock);
    }
    m_left -= size;
    return std::exchange(m_next, m_next + size);
}

void RowArena::Clear() noexcept {
    m_blocks.clear();
    m_next = nullptr;
    m_left = 0;
    m_blockSize = kFirstBlock;
}

}  // namespace roundup
