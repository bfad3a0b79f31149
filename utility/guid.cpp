#include "utility/guid.h"

namespace roundup {

namespace {

// What each character of a form's text is: a digit of one of the sixteen bytes, or itself. Digits are written in the
// order of the text, so that the little-endian words of a braced form need no arithmetic: 'A' is the high digit of
// byte 0, 'a' its low one, and so on to 'P' and 'p' for byte 15.
constexpr std::u16string_view kLayouts[] = {
    u"{DdCcBbAa-FfEe-HhGg-IiJj-KkLlMmNnOoPp}",
    u"{DdCcBbAa-FfEe-HhGg-IiJjKkLlMmNnOoPp}",
    u"AaBbCcDdEeFfGgHhIiJjKkLlMmNnOoPp",
    u"aAbBcCdDeEfFgGhHiIjJkKlLmMnNoOpP",
};

constexpr std::u16string_view LayoutOf(GuidForm form) noexcept { return kLayouts[static_cast<std::size_t>(form) & 3]; }

constexpr bool IsHigh(char16_t mark) noexcept { return mark >= u'A' && mark <= u'P'; }
constexpr bool IsLow(char16_t mark) noexcept { return mark >= u'a' && mark <= u'p'; }

// The value of a hexadecimal digit, -1 for anything else.
constexpr int DigitOf(char16_t c) noexcept {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    return -1;
}

}  // namespace

Guid ParseGuid(TextOrNull source, GuidForm form) noexcept {
    const std::u16string_view text = source.View();
    const std::u16string_view layout = LayoutOf(form);
    if (text.size() != layout.size()) return Guid{};
    Guid value;
    for (std::size_t i = 0; i < layout.size(); ++i) {
        const char16_t mark = layout[i];
        if (!IsHigh(mark) && !IsLow(mark)) {
            if (text[i] != mark) return Guid{};
            continue;
        }
        const int digit = DigitOf(text[i]);
        if (digit < 0) return Guid{};
        std::uint8_t& byte = value.bytes[static_cast<std::size_t>(mark - (IsHigh(mark) ? u'A' : u'a'))];
        byte = static_cast<std::uint8_t>(byte | (IsHigh(mark) ? digit << 4 : digit));
    }
    return value;
}

FixedText<39> GuidText(const Guid& value, GuidForm form) noexcept {
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    const std::u16string_view layout = LayoutOf(form);
    FixedText<39> text;
    char16_t* out = text.Data();
    for (const char16_t mark : layout) {
        if (IsHigh(mark)) {
            *out++ = kDigits[value.bytes[static_cast<std::size_t>(mark - u'A')] >> 4];
        } else if (IsLow(mark)) {
            *out++ = kDigits[value.bytes[static_cast<std::size_t>(mark - u'a')] & 15];
        } else {
            *out++ = mark;
        }
    }
    return text;
}

OwnedString FormatGuid(const Guid& value, GuidForm form) noexcept { return OwnedString(GuidText(value, form).View()); }

}  // namespace roundup
