#include "platform/recorded/registry/foldedname.h"

#include <cstring>

#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::uint64_t kNotAscii = 0xFF80FF80FF80FF80U;
constexpr std::uint64_t kOddMultiplier = 0x9E3779B97F4A7C15U;

// Upper-cases four ASCII units at once. Adding 0x1F carries a unit of at least 'a' into bit 7, adding 5 one that is
// above 'z'; no carry leaves its unit.
std::uint64_t UpperFour(std::uint64_t units) noexcept {
    const std::uint64_t fromA = units + 0x001F001F001F001FU;
    const std::uint64_t aboveZ = units + 0x0005000500050005U;
    return units - (((fromA & ~aboveZ) & 0x0080008000800080U) >> 2);
}

// The two halves of the product, folded. The key is secret, so differences of the input that cancel cannot be chosen.
std::uint64_t Mix(std::uint64_t hash, std::uint64_t units, std::uint64_t key) noexcept {
    const std::uint64_t a = hash ^ units;
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * key;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
    const std::uint64_t low = (a & 0xFFFFFFFFU) * (key & 0xFFFFFFFFU);
    const std::uint64_t crossA = (a >> 32) * (key & 0xFFFFFFFFU);
    const std::uint64_t crossB = (a & 0xFFFFFFFFU) * (key >> 32);
    const std::uint64_t high = (a >> 32) * (key >> 32);
    const std::uint64_t middle = (low >> 32) + (crossA & 0xFFFFFFFFU) + (crossB & 0xFFFFFFFFU);
    return ((low & 0xFFFFFFFFU) | (middle << 32)) ^ (high + (crossA >> 32) + (crossB >> 32) + (middle >> 32));
#endif
}

// One pass over the name: folds into out and hashes what it wrote.
std::uint32_t FoldInto(std::u16string_view name, std::uint64_t seed, char16_t* out) noexcept {
    const char16_t* in = name.data();
    std::size_t left = name.size();
    const std::uint64_t key = seed | 1;
    std::uint64_t hash = (seed >> 1) + left * kOddMultiplier;
    for (; left >= 4; left -= 4, in += 4, out += 4) {
        std::uint64_t units;
        std::memcpy(&units, in, sizeof(units));
        if ((units & kNotAscii) == 0) {
            units = UpperFour(units);
            std::memcpy(out, &units, sizeof(units));
        } else {
            for (int i = 0; i < 4; ++i) out[i] = ToUpper(in[i]);
            std::memcpy(&units, out, sizeof(units));
        }
        hash = Mix(hash, units, key);
    }
    std::uint64_t tail = 0;
    for (; left > 0; --left, ++in, ++out) {
        *out = ToUpper(*in);
        tail = (tail << 16) | *out;
    }
    hash = Mix(hash, tail, key);
    hash = Mix(hash, kOddMultiplier, key);
    return static_cast<std::uint32_t>(hash >> 32);
}

}  // namespace

FoldedName::FoldedName(std::u16string_view name, std::uint64_t seed) : m_original(name) {
    char16_t* text = m_small;
    if (name.size() > kSmall) {
        m_large.resize(name.size());
        text = m_large.data();
    }
    m_hash = FoldInto(name, seed, text);
    m_text = text;
}

bool FoldedName::Matches(std::u16string_view recorded) const noexcept {
    if (recorded.size() != m_original.size()) return false;
    if (EqualsExactly(recorded, m_original)) return true;
    for (std::size_t i = 0; i < recorded.size(); ++i) {
        if (ToUpper(recorded[i]) != m_text[i]) return false;
    }
    return true;
}

}  // namespace roundup
