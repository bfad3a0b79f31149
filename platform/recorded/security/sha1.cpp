#include "platform/recorded/security/sha1.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace roundup {

namespace {

constexpr std::size_t kBlock = 64;

using State = std::array<std::uint32_t, 5>;

std::uint32_t Mix(std::size_t round, std::uint32_t b, std::uint32_t c, std::uint32_t d) noexcept {
    if (round < 20) return ((b & c) | (~b & d)) + 0x5A827999U;
    if (round < 40) return (b ^ c ^ d) + 0x6ED9EBA1U;
    if (round < 60) return ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDCU;
    return (b ^ c ^ d) + 0xCA62C1D6U;
}

void AddBlock(State& state, const std::byte* block) noexcept {
    std::array<std::uint32_t, 80> words{};
    for (std::size_t i = 0; i < kBlock; ++i) {
        words[i / 4] = words[i / 4] << 8 | std::to_integer<std::uint32_t>(block[i]);
    }
    for (std::size_t i = 16; i < words.size(); ++i) {
        words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }
    auto [a, b, c, d, e] = state;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::uint32_t next = std::rotl(a, 5) + Mix(i, b, c, d) + e + words[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
}

}  // namespace

std::array<std::uint32_t, 5> Sha1(std::span<const std::byte> bytes) {
    State state = {0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U, 0xC3D2E1F0U};
    // The bytes, a bit that is set, zeros, and the number of bits in eight bytes, to whole blocks.
    std::vector<std::byte> padded(bytes.begin(), bytes.end());
    padded.push_back(std::byte{0x80});
    padded.resize((padded.size() + 8 + kBlock - 1) / kBlock * kBlock);
    const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
    for (std::size_t i = 0; i < 8; ++i) padded[padded.size() - 1 - i] = static_cast<std::byte>(bits >> (8 * i));
    for (std::size_t at = 0; at < padded.size(); at += kBlock) AddBlock(state, padded.data() + at);
    return state;
}

}  // namespace roundup
