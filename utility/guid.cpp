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

// Where a form has the digits of each byte, and all that is no digit.
struct Places {
    std::uint8_t high[16];
    std::uint8_t low[16];
    std::uint8_t marks[6];
    std::uint8_t markCount;
};

constexpr Places PlacesIn(std::u16string_view layout) noexcept {
    Places places{};
    for (std::size_t i = 0; i < layout.size(); ++i) {
        const auto place = static_cast<std::uint8_t>(i);
        if (IsHigh(layout[i])) {
            places.high[layout[i] - u'A'] = place;
        } else if (IsLow(layout[i])) {
            places.low[layout[i] - u'a'] = place;
        } else {
            places.marks[places.markCount++] = place;
        }
    }
    return places;
}

constexpr Places kPlaces[] = {PlacesIn(kLayouts[0]), PlacesIn(kLayouts[1]), PlacesIn(kLayouts[2]),
                              PlacesIn(kLayouts[3])};

// The values of hexadecimal digits; any other character of ASCII has a bit above them.
constexpr std::uint8_t kNoDigit = 0x80;
constexpr auto kDigitValues = [] {
    std::array<std::uint8_t, 128> values{};
    values.fill(kNoDigit);
    for (std::uint8_t i = 0; i < 10; ++i) values[u'0' + i] = i;
    for (std::uint8_t i = 0; i < 6; ++i) {
        values[u'A' + i] = values[u'a' + i] = static_cast<std::uint8_t>(10 + i);
    }
    return values;
}();

}  // namespace

Guid ParseGuid(TextOrNull source, GuidForm form) noexcept {
    const std::u16string_view text = source.View();
    const std::u16string_view layout = LayoutOf(form);
    if (text.size() != layout.size()) return Guid{};
    const Places& places = kPlaces[static_cast<std::size_t>(form) & 3];
    for (std::size_t i = 0; i < places.markCount; ++i) {
        if (text[places.marks[i]] != layout[places.marks[i]]) return Guid{};
    }
    Guid value;
    // What was seen of all digits is looked at once: in most texts each of them is one.
    std::uint32_t characters = 0;
    std::uint32_t digits = 0;
    for (std::size_t i = 0; i < value.bytes.size(); ++i) {
        const std::uint32_t first = text[places.high[i]];
        const std::uint32_t second = text[places.low[i]];
        const std::uint32_t high = kDigitValues[first % kDigitValues.size()];
        const std::uint32_t low = kDigitValues[second % kDigitValues.size()];
        characters |= first | second;
        digits |= high | low;
        value.bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return characters < kDigitValues.size() && digits < kNoDigit ? value : Guid{};
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
