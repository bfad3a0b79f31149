#include "utility/utf.h"

#include <algorithm>
#include <cstdint>

namespace roundup {

namespace {

struct LeadByte {
    std::size_t trailing;  // bytes that follow
    std::uint8_t low;      // bounds of the first of them, which keep out overlong forms, surrogates and what is too big
    std::uint8_t high;
};

// The well-formed sequences of the Unicode standard, table 3-7. No trailing byte for a byte that leads nothing.
constexpr LeadByte DescribeLead(std::uint8_t byte) noexcept {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

void AppendUtf8(std::string& target, char32_t c) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (c < 0x80) {
        target += byte(c);
    } else if (c < 0x800) {
        target += byte(0xC0 | (c >> 6));
        target += byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        target += byte(0xE0 | (c >> 12));
        target += byte(0x80 | ((c >> 6) & 0x3F));
        target += byte(0x80 | (c & 0x3F));
    } else {
        target += byte(0xF0 | (c >> 18));
        target += byte(0x80 | ((c >> 12) & 0x3F));
        target += byte(0x80 | ((c >> 6) & 0x3F));
        target += byte(0x80 | (c & 0x3F));
    }
}

// Decodes into target, up to the first fault when strict. Answers where it stopped.
std::size_t Decode(std::string_view text, std::u16string& target, bool strict) {
    // A text never has more units than bytes, so that one block is enough.
    target.resize(text.size());
    std::size_t length = 0;
    std::string_view rest = text;
    while (!rest.empty()) {
        if (static_cast<unsigned char>(rest.front()) < 0x80) {
            target[length++] = static_cast<unsigned char>(rest.front());
            rest.remove_prefix(1);
            continue;
        }
        bool valid = true;
        const std::size_t start = text.size() - rest.size();
        const char32_t character = TakeCharacter(rest, &valid);
        if (strict && !valid) return start;
        char16_t units[2];
        const std::size_t count = ToUnits(character, units);
        for (std::size_t i = 0; i < count; ++i) target[length++] = units[i];
    }
    target.resize(length);
    return text.size();
}

}  // namespace

char32_t TakeCharacter(std::string_view& text, bool* valid) noexcept {
    const auto lead = static_cast<std::uint8_t>(text.front());
    text.remove_prefix(1);
    if (valid != nullptr) *valid = true;
    if (lead < 0x80) return lead;
    const LeadByte shape = DescribeLead(lead);
    std::size_t left = shape.trailing;
    char32_t character = lead & (0x3FU >> left);
    std::uint8_t low = shape.low;
    std::uint8_t high = shape.high;
    for (; left > 0 && !text.empty(); --left) {
        const auto byte = static_cast<std::uint8_t>(text.front());
        if (byte < low || byte > high) break;
        character = (character << 6) | (byte & 0x3FU);
        text.remove_prefix(1);
        low = 0x80;
        high = 0xBF;
    }
    if (shape.trailing != 0 && left == 0) return character;
    if (valid != nullptr) *valid = false;
    return kReplacementCharacter;
}

char32_t TakeCharacter(std::u16string_view& text) noexcept {
    const char16_t first = text.front();
    text.remove_prefix(1);
    if ((first & 0xF800) != 0xD800) return first;
    if ((first & 0xFC00) != 0xD800 || text.empty() || (text.front() & 0xFC00) != 0xDC00) return kReplacementCharacter;
    const char16_t second = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((static_cast<char32_t>(first) & 0x3FF) << 10) + (second & 0x3FFU);
}

std::size_t ToUnits(char32_t character, char16_t (&units)[2]) noexcept {
    if (character < 0x10000) {
        units[0] = static_cast<char16_t>(character);
        return 1;
    }
    units[0] = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    return 2;
}

std::string ToUtf8(std::u16string_view text) {
    // Most texts are ASCII from end to end.
    const auto ascii = static_cast<std::size_t>(
        std::find_if(text.begin(), text.end(), [](char16_t unit) { return unit >= 0x80; }) - text.begin());
    std::string target(text.size(), '\0');
    std::transform(text.begin(), text.begin() + ascii, target.begin(), [](char16_t c) { return static_cast<char>(c); });
    target.resize(ascii);
    text.remove_prefix(ascii);
    while (!text.empty()) AppendUtf8(target, TakeCharacter(text));
    return target;
}

std::u16string FromUtf8(std::string_view text) {
    std::u16string target;
    Decode(text, target, false);
    return target;
}

bool FromUtf8Strict(std::string_view text, std::u16string& target, std::size_t& fault) {
    std::u16string made;
    const std::size_t end = Decode(text, made, true);
    if (end != text.size()) {
        fault = end;
        return false;
    }
    target = std::move(made);
    return true;
}

}  // namespace roundup
