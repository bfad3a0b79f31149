// What the readers of texts share: characters, limits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/recorded/registry/registrypath.h"

namespace roundup {

// Limits of the registry ("Registry Element Size Limits" of the Windows documentation).
inline constexpr std::size_t kLongestKeyName = 255;
inline constexpr std::size_t kLongestValueName = 16383;
inline constexpr std::size_t kDeepestKey = 512;

// Units are those of a text of either width.
template <class Unit>
constexpr bool IsBlank(Unit c) noexcept {
    return c == Unit{' '} || c == Unit{'\t'};
}
template <class Unit>
constexpr bool IsLineEnd(Unit c) noexcept {
    return c == Unit{'\n'} || c == Unit{'\r'};
}

constexpr std::array<std::uint8_t, 128> MakeHexDigits() {
    std::array<std::uint8_t, 128> digits{};
    digits.fill(0xFF);
    for (unsigned i = 0; i < 10; ++i) digits['0' + i] = static_cast<std::uint8_t>(i);
    for (unsigned i = 0; i < 6; ++i) digits['a' + i] = digits['A' + i] = static_cast<std::uint8_t>(10 + i);
    return digits;
}
inline constexpr std::array<std::uint8_t, 128> kHexDigits = MakeHexDigits();

// 0xFF for what is no hexadecimal digit.
inline unsigned HexDigit(char16_t c) noexcept { return c < kHexDigits.size() ? kHexDigits[c] : 0xFFU; }
inline unsigned HexDigit(char c) noexcept { return HexDigit(static_cast<char16_t>(static_cast<unsigned char>(c))); }

// Null, or what no registry can hold of the path below a root.
inline const char* WrongWithKeyPath(std::u16string_view path) noexcept {
    std::size_t depth = 0;
    for (auto name = TakeComponent(path); !name.empty(); name = TakeComponent(path)) {
        if (name.size() > kLongestKeyName) return "a key name of more than 255 characters";
        if (++depth > kDeepestKey) return "a key more than 512 levels deep";
    }
    return nullptr;
}

}  // namespace roundup
