// A zero-terminated text in an array of fixed size, for records and for limits that are part of the behaviour.
#pragma once

#include <cstddef>
#include <string_view>

#include "utility/ownedstring.h"

namespace roundup {

// Holds at most N - 1 characters. Copies cut and never overrun. The array is the first and only member, so that a
// record made of these has the layout of its arrays.
template <std::size_t N>
class FixedText {
  public:
    constexpr FixedText() noexcept = default;
    explicit FixedText(std::u16string_view text) noexcept { Assign(text); }

    void Assign(std::u16string_view text) noexcept { CopyBounded(m_text, text, N); }
    // Adds what fits; false when something was cut.
    bool Append(std::u16string_view text) noexcept {
        const std::size_t length = View().size();
        CopyBounded(m_text + length, text, N - length);
        return text.size() < N - length;
    }
    void Clear() noexcept { m_text[0] = u'\0'; }

    bool IsEmpty() const noexcept { return m_text[0] == u'\0'; }
    const char16_t* Text() const noexcept { return m_text; }
    char16_t* Data() noexcept { return m_text; }
    static constexpr std::size_t Size() noexcept { return N; }
    std::u16string_view View() const noexcept {
        std::size_t length = 0;
        while (length < N && m_text[length] != u'\0') ++length;
        return {m_text, length};
    }
    operator std::u16string_view() const noexcept { return View(); }  // NOLINT(google-explicit-constructor)

  private:
    char16_t m_text[N] = {};
};

}  // namespace roundup
