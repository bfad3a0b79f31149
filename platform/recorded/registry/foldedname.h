// A name ready to be looked up: upper-cased, with its hash.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "utility/casemap.h"

namespace roundup {

// Names that differ only in case fold to the same text and hash. The hash is keyed by the seed, so that a source
// cannot choose names that collide. Looking up short names, which all real ones are, allocates nothing.
class FoldedName {
  public:
    FoldedName(std::u16string_view name, std::uint64_t seed);
    FoldedName(const FoldedName&) = delete;
    FoldedName& operator=(const FoldedName&) = delete;

    std::u16string_view Original() const noexcept { return m_original; }
    std::u16string_view Text() const noexcept { return {m_text, m_original.size()}; }
    std::uint32_t Hash() const noexcept { return m_hash; }
    // True when upper-casing changed nothing.
    bool IsOriginal() const noexcept { return EqualsExactly(Text(), m_original); }
    // True when the recorded name folds to this text.
    bool Matches(std::u16string_view recorded) const noexcept;

  private:
    static constexpr std::size_t kSmall = 160;

    std::u16string_view m_original;
    const char16_t* m_text;
    std::uint32_t m_hash;
    std::u16string m_large;
    char16_t m_small[kSmall];  // NOLINT: filled by the constructor as far as the name goes
};

}  // namespace roundup
