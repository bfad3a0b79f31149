// Where the stored form of an application goes: two sinks with the same operations. What the one counts the other
// writes, since one set of functions drives both.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "appcenter/app/iapp.h"
#include "utility/ownedstring.h"

namespace roundup {

// Adds up the bytes.
class RecordCounter {
  public:
    std::uint64_t Position() const noexcept { return m_position; }
    bool Ok() const noexcept { return true; }
    template <class Number>
    void Put(Number) noexcept {
        m_position += sizeof(Number);
    }
    void PutBytes(std::span<const std::byte> bytes) noexcept { m_position += bytes.size(); }
    void PutText(const OwnedString& text) noexcept {
        m_position += sizeof(std::uint32_t);
        if (!text.IsNull()) m_position += (std::uint64_t{text.Length()} + 1) * sizeof(char16_t);
    }
    // The record of an application of another kind.
    void PutForeign(const IApp& app) { m_position += app.GetSize(); }
    void Patch(std::uint64_t, std::uint32_t) noexcept {}

  private:
    std::uint64_t m_position = 0;
};

// Writes to a buffer of the caller's with plain stores. What does not fit makes it fail, for good.
class RecordWriter {
  public:
    RecordWriter(std::byte* buffer, std::uint32_t size) noexcept : m_buffer(buffer), m_size(size) {}

    std::uint64_t Position() const noexcept { return m_position; }
    bool Ok() const noexcept { return m_ok; }
    template <class Number>
    void Put(Number number) noexcept {
        static_assert(std::endian::native == std::endian::little);
        PutRaw(&number, sizeof number);
    }
    void PutBytes(std::span<const std::byte> bytes) noexcept { PutRaw(bytes.data(), bytes.size()); }
    void PutText(const OwnedString& text) noexcept {
        const std::uint64_t size = text.IsNull() ? 0 : (std::uint64_t{text.Length()} + 1) * sizeof(char16_t);
        if (!m_ok || m_position + size + sizeof(std::uint32_t) > m_size) {
            m_ok = false;
            return;
        }
        Put(static_cast<std::uint32_t>(size));
        if (size != 0) PutRaw(text.Get(), static_cast<std::size_t>(size));
    }
    void PutForeign(const IApp& app) {
        std::uint32_t count = 0;
        m_ok = m_ok && Succeeded(app.Serialize(m_buffer + m_position, m_size - m_position, count));
        if (m_ok) m_position += count;
    }
    // Overwrites a word that was written before.
    void Patch(std::uint64_t position, std::uint32_t word) noexcept {
        if (m_ok) std::memcpy(m_buffer + position, &word, sizeof word);
    }

  private:
    void PutRaw(const void* bytes, std::size_t size) noexcept {
        if (!m_ok || size > m_size - m_position) {
            m_ok = false;
            return;
        }
        if (size != 0) std::memcpy(m_buffer + m_position, bytes, size);
        m_position += static_cast<std::uint32_t>(size);
    }

    std::byte* const m_buffer;
    const std::uint32_t m_size;
    std::uint32_t m_position = 0;
    bool m_ok = true;
};

}  // namespace roundup
