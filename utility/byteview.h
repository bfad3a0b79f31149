// The bounded reader of foreign bytes: little-endian numbers and parts of a block, never past its end.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>

namespace roundup {

class ByteView {
  public:
    ByteView() noexcept = default;
    explicit ByteView(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

    std::size_t Size() const noexcept { return m_bytes.size(); }
    const std::byte* Data() const noexcept { return m_bytes.data(); }
    std::span<const std::byte> Bytes() const noexcept { return m_bytes; }

    // Offsets are 64 bits wide, so that sums of 32-bit fields cannot wrap.
    bool Holds(std::uint64_t offset, std::uint64_t size) const noexcept {
        return offset <= m_bytes.size() && size <= m_bytes.size() - offset;
    }
    template <class Number>
    std::optional<Number> At(std::uint64_t offset) const noexcept {
        static_assert(std::endian::native == std::endian::little && std::is_trivially_copyable_v<Number>);
        if (!Holds(offset, sizeof(Number))) return std::nullopt;
        Number number;
        std::memcpy(&number, m_bytes.data() + offset, sizeof number);
        return number;
    }
    std::optional<ByteView> Slice(std::uint64_t offset, std::uint64_t size) const noexcept {
        if (!Holds(offset, size)) return std::nullopt;
        return ByteView(m_bytes.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size)));
    }

  private:
    std::span<const std::byte> m_bytes;
};

}  // namespace roundup
