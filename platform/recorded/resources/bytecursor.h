// Takes a block apart from its start to its end.
#pragma once

#include <type_traits>

#include "utility/byteview.h"

namespace roundup {

// What the block does not hold is 0 or empty, and so is all behind it; Failed tells.
class ByteCursor {
  public:
    explicit ByteCursor(ByteView bytes) noexcept : m_bytes(bytes) {}

    bool Failed() const noexcept { return m_failed; }
    template <class Number>
    Number Take() noexcept {
        const ByteView part = TakeBytes(sizeof(Number));
        return part.At<Number>(0).value_or(Number{});
    }
    ByteView TakeBytes(std::uint64_t size) noexcept {
        const std::optional<ByteView> part = m_failed ? std::nullopt : m_bytes.Slice(m_at, size);
        m_failed = !part.has_value();
        if (m_failed) return {};
        m_at += size;
        return *part;
    }
    ByteView Rest() noexcept { return TakeBytes(m_bytes.Size() - m_at); }

  private:
    const ByteView m_bytes;
    std::uint64_t m_at = 0;
    bool m_failed = false;
};

}  // namespace roundup
