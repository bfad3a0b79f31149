#include "platform/recorded/registry/arena.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

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

void Arena::Swap(Arena& other) noexcept {
    m_blocks.swap(other.m_blocks);
    std::swap(m_block, other.m_block);
    std::swap(m_used, other.m_used);
    std::swap(m_size, other.m_size);
    std::swap(m_free, other.m_free);
}

// Rounds the size up to that of its class.
std::size_t Arena::ClassOf(std::size_t& bytes) noexcept {
    if (bytes <= kSmallClasses * 16) {
        const std::size_t steps = std::max<std::size_t>((bytes + 15) / 16, 1);
        bytes = steps * 16;
        return steps - 1;
    }
    bytes = std::bit_ceil(bytes);
    return kSmallClasses + std::min<std::size_t>(static_cast<std::size_t>(std::countr_zero(bytes)) - 11, 31);
}

void* Arena::AllocateReusable(std::size_t bytes) {
    if (bytes > static_cast<std::size_t>(-1) / 4) throw std::bad_alloc();
    FreeArray*& free = m_free[ClassOf(bytes)];
    if (free == nullptr) return Allocate(bytes, alignof(void*));
    FreeArray* const array = free;
    free = array->next;
    return array;
}

void Arena::ReturnReusable(void* array, std::size_t bytes) noexcept {
    FreeArray*& free = m_free[ClassOf(bytes)];
    free = new (array) FreeArray{free};
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
