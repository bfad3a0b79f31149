#include "platform/recorded/registry/arena.h"

#include <algorithm>
#include <cstring>

namespace roundup {

namespace {

constexpr std::size_t kFirstBlock = 16U * 1024;
constexpr std::size_t kLargestBlock = 1024U * 1024;

}  // namespace

void* Arena::AllocateSlow(std::size_t bytes) {
    const std::size_t next = std::clamp(m_size * 2, kFirstBlock, kLargestBlock);
    if (bytes > next / 4) {
        // A block of its own, so that the rest of the current one is not thrown away.
        m_blocks.emplace_back(new std::byte[bytes]);
        return m_blocks.back().get();
    }
    m_blocks.emplace_back(new std::byte[next]);
    m_block = m_blocks.back().get();
    m_size = next;
    m_used = bytes;
    return m_block;
}

const char16_t* Arena::CopyText(std::u16string_view text) {
    char16_t* const copy = Array<char16_t>(text.size());
    if (!text.empty()) std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
    return copy;
}

std::byte* Arena::CopyBytes(const void* data, std::size_t size) {
    std::byte* const copy = static_cast<std::byte*>(Allocate(size, alignof(char16_t)));
    if (size != 0) std::memcpy(copy, data, size);
    return copy;
}

}  // namespace roundup
