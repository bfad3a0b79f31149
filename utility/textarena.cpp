#include "utility/textarena.h"

#include <algorithm>
#include <new>

#include "utility/boundary.h"

namespace roundup {

char16_t* TextArena::Room(std::size_t length) noexcept {
    const std::size_t size = length + 1;
    if (m_blocks.empty() || m_blocks.back().size - m_blocks.back().used < size) {
        const std::size_t next = m_blocks.empty() ? kFirstBlock : std::min(m_blocks.back().size * 2, kLargestBlock);
        Block block;
        block.size = std::max(next, size);
        block.text.reset(new (std::nothrow) char16_t[block.size]);
        if (block.text == nullptr) return nullptr;
        const bool added = AtBoundary([&] { return m_blocks.push_back(std::move(block)), true; }, [] { return false; });
        if (!added) return nullptr;
    }
    return m_blocks.back().text.get() + m_blocks.back().used;
}

std::u16string_view TextArena::Keep(std::size_t length) noexcept {
    Block& block = m_blocks.back();
    char16_t* text = block.text.get() + block.used;
    text[length] = u'\0';
    block.used += length + 1;
    return {text, length};
}

std::u16string_view TextArena::Copy(std::u16string_view text) {
    char16_t* const room = Room(text.size());
    if (room == nullptr) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), room);
    return Keep(text.size());
}

void TextArena::Clear() noexcept { m_blocks.clear(); }

}  // namespace roundup
