#include "platform/recorded/installer/codepage.h"

#include <algorithm>

#include "platform/codepagetext.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::uint32_t kNeutral = 0;
constexpr std::uint32_t kWestern = 1252;
constexpr std::uint32_t kUtf8 = 65001;
constexpr char16_t kReplacement = 0xFFFD;

constexpr bool IsAscii(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

// Of the Windows pages these give one character for each byte.
constexpr bool IsSingleByte(std::uint32_t page) noexcept { return page == 874 || (page >= 1250 && page <= 1258); }

}  // namespace

std::unique_ptr<CodePage> CodePage::Open(std::uint32_t number) {
    std::unique_ptr<CodePage> page(new CodePage(number == kNeutral ? kWestern : number));
    return page->SetUpUnits() ? std::move(page) : nullptr;
}

bool CodePage::SetUpUnits() {
    for (char16_t c = 0; c < 0x80; ++c) m_units[c] = c;
    if (m_number == kUtf8) return true;
    std::u16string decoded;
    if (!DecodeByPlatform(m_number, "a", decoded)) return false;
    if (!IsSingleByte(m_number)) return true;
    m_singleByte = true;
    for (unsigned c = 0x80; c < 0x100; ++c) {
        const char byte = static_cast<char>(c);
        const bool done = DecodeByPlatform(m_number, {&byte, 1}, decoded) && decoded.size() == 1;
        m_units[c] = done ? decoded[0] : kReplacement;
        // Windows shows the places without a character among the first 32 as control characters.
        if (m_units[c] == kReplacement && c < 0xA0) m_units[c] = static_cast<char16_t>(c);
    }
    return true;
}

bool CodePage::IsUnitPerByte(std::string_view text) const noexcept {
    return m_singleByte || std::all_of(text.begin(), text.end(), IsAscii);
}

std::u16string CodePage::Decode(std::string_view text) const {
    if (IsUnitPerByte(text)) {
        std::u16string units(text.size(), u'\0');
        std::transform(text.begin(), text.end(), units.begin(), [this](char c) { return UnitOf(c); });
        return units;
    }
    if (m_number == kUtf8) return FromUtf8(text);
    std::u16string units;
    (void)DecodeByPlatform(m_number, text, units);
    return units;
}

}  // namespace roundup
