// The code page in which an installer database keeps its texts.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace roundup {

// Numbers as Windows counts them; 0 is the neutral one, for texts without a character beyond ASCII, whose others are
// shown as those of page 1252. Every thread may call.
class CodePage {
  public:
    // Null for a page that this system cannot read. Throws std::bad_alloc.
    static std::unique_ptr<CodePage> Open(std::uint32_t number);

    // Bytes that are no character become U+FFFD, or what the platform has for them. Throws std::bad_alloc.
    std::u16string Decode(std::string_view text) const;
    // When every byte of the text is one unit these can be had one by one.
    bool IsUnitPerByte(std::string_view text) const noexcept;
    char16_t UnitOf(char byte) const noexcept { return m_units[static_cast<unsigned char>(byte)]; }

  private:
    explicit CodePage(std::uint32_t number) noexcept : m_number(number) {}
    bool SetUpUnits();

    const std::uint32_t m_number;
    // Set once by Open.
    bool m_singleByte = false;
    std::array<char16_t, 256> m_units{};  // of ASCII alone unless each byte is a character
};

}  // namespace roundup
