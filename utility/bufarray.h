// An owned block of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <utility>

namespace roundup {

// Holds a block, its size and the position at which Write goes on.
class CBufArray {
  public:
    CBufArray() noexcept = default;
    CBufArray(CBufArray&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)),
          m_position(std::exchange(other.m_position, 0)),
          m_size(std::exchange(other.m_size, 0)) {}
    CBufArray& operator=(CBufArray&& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_position, other.m_position);
        std::swap(m_size, other.m_size);
        return *this;
    }
    CBufArray(const CBufArray&) = delete;
    CBufArray& operator=(const CBufArray&) = delete;
    virtual ~CBufArray() { std::free(m_data); }

    // Frees the old block and makes a new one of size bytes, all zero, with the position at its start. False, and
    // size 0, when memory is short.
    bool Alloc(std::uint32_t size) noexcept {
        std::free(std::exchange(m_data, nullptr));
        m_position = 0;
        // A block of no bytes is a block all the same, so that null means one thing.
        m_data = static_cast<std::uint8_t*>(std::calloc(size != 0 ? size : 1, 1));
        m_size = m_data != nullptr ? size : 0;
        return m_data != nullptr;
    }

    // Copies bytes to the position and moves it on. False, and nothing written, when they do not fit.
    bool Write(std::span<const std::uint8_t> bytes) noexcept {
        if (bytes.size() > m_size - m_position) return false;
        if (!bytes.empty()) std::memcpy(m_data + m_position, bytes.data(), bytes.size());
        m_position += static_cast<std::uint32_t>(bytes.size());
        return true;
    }

    std::uint32_t GetSize() const noexcept { return m_size; }
    // Null without a block.
    std::uint8_t* GetData() noexcept { return m_data; }
    const std::uint8_t* GetData() const noexcept { return m_data; }
    std::uint32_t GetPosition() const noexcept { return m_position; }

  private:
    std::uint8_t* m_data = nullptr;
    std::uint32_t m_position = 0;
    std::uint32_t m_size = 0;
};

}  // namespace roundup
