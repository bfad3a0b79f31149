// Memory for things that live as long as the whole: never freed one by one, gone all at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <vector>

namespace roundup {

// Not synchronised. Throws std::bad_alloc.
class Arena {
  public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    void Swap(Arena& other) noexcept;

    // bytes may be 0; alignment is a power of two of at most that of std::max_align_t.
    void* Allocate(std::size_t bytes, std::size_t alignment) {
        const std::size_t start = (m_used + alignment - 1) & ~(alignment - 1);
        if (start <= m_size && bytes <= m_size - start) {
            m_used = start + bytes;
            return m_block + start;
        }
        return AllocateSlow(bytes);
    }

    // Not initialised: for types that need no constructor and no destructor.
    template <class T>
    T* Array(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(Allocate(count * sizeof(T), alignof(T)));
    }

    template <class T>
    T* Make() {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (Allocate(sizeof(T), alignof(T))) T();
    }

    // As Array, for what grows: Return hands an outgrown array back, and the next one of its size gets its place.
    template <class T>
    T* Reusable(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= alignof(void*));
        return static_cast<T*>(AllocateReusable(count * sizeof(T)));
    }
    template <class T>
    void Return(T* array, std::size_t count) noexcept {
        if (array != nullptr) ReturnReusable(array, count * sizeof(T));
    }

    // A copy without a terminator, never null.
    const char16_t* CopyText(std::u16string_view text);
    std::byte* CopyBytes(const void* data, std::size_t size);

  private:
    struct FreeArray {
        FreeArray* next;
    };
    // Sizes in steps of 16 bytes up to 1 KiB, then powers of two.
    static constexpr std::size_t kSmallClasses = 64;
    static constexpr std::size_t kClasses = kSmallClasses + 32;

    static std::size_t ClassOf(std::size_t& bytes) noexcept;
    void* AllocateSlow(std::size_t bytes);
    void* AllocateReusable(std::size_t bytes);
    void ReturnReusable(void* array, std::size_t bytes) noexcept;

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;  // in the order of their coming
    std::byte* m_block = nullptr;
    std::size_t m_used = 0;
    std::size_t m_size = 0;
    FreeArray* m_free[kClasses] = {};
};

}  // namespace roundup
