#include <algorithm>

#include "platform/recorded/initext.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// What Windows-1252 has at 0x80 to 0x9F (bestfit1252.txt of the Unicode consortium); undefined bytes stay as they are.
constexpr char16_t kHighControls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";

std::u16string FromUtf16(std::string_view bytes, bool bigEndian) {
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        text[i] = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return text;
}

std::string ToUtf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t c : text) {
        const char low = static_cast<char>(c & 0xFF);
        const char high = static_cast<char>(c >> 8);
        bytes.push_back(bigEndian ? high : low);
        bytes.push_back(bigEndian ? low : high);
    }
    return bytes;
}

std::u16string FromWindows1252(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto c = static_cast<unsigned char>(byte);
        text.push_back(c >= 0x80 && c < 0xA0 ? kHighControls[c - 0x80] : c);
    }
    return text;
}

std::string ToWindows1252(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const char16_t c : text) {
        const auto* high = std::find(std::begin(kHighControls), std::end(kHighControls), c);
        if (high != std::end(kHighControls)) {
            bytes.push_back(static_cast<char>(0x80 + (high - kHighControls)));
        } else {
            bytes.push_back(c < 0x100 && (c < 0x80 || c >= 0xA0) ? static_cast<char>(c) : '?');
        }
    }
    return bytes;
}

// Text of one byte for each character holds no zeros, that of two holds them where the upper halves are.
bool LooksLikeUtf16(std::string_view bytes) noexcept {
    constexpr std::size_t kLookedAt = 256;
    const std::string_view start = bytes.substr(0, kLookedAt);
    bool upperZero = false;
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (start[i] != '\0') continue;
        if (i % 2 == 0) return false;
        upperZero = true;
    }
    return upperZero && bytes.size() % 2 == 0;
}

}  // namespace

std::u16string DecodeIni(std::string_view bytes, IniEncoding& encoding) {
    if (bytes.starts_with(kUtf16Mark) || bytes.starts_with(kUtf16BigEndianMark)) {
        const bool bigEndian = bytes.starts_with(kUtf16BigEndianMark);
        encoding = bigEndian ? IniEncoding::Utf16BigEndianMarked : IniEncoding::Utf16Marked;
        return FromUtf16(bytes.substr(2), bigEndian);
    }
    // Zeros in a file that says it is UTF-8 do not make it anything else.
    if (!bytes.starts_with(kUtf8Mark) && LooksLikeUtf16(bytes)) {
        encoding = IniEncoding::Utf16;
        return FromUtf16(bytes, false);
    }
    encoding = IniEncoding::Utf8;
    if (bytes.starts_with(kUtf8Mark)) {
        encoding = IniEncoding::Utf8Marked;
        bytes.remove_prefix(kUtf8Mark.size());
    }
    std::u16string text;
    std::size_t fault = 0;
    if (FromUtf8Strict(bytes, text, fault)) return text;
    if (encoding == IniEncoding::Utf8Marked) return FromUtf8(bytes);
    encoding = IniEncoding::Windows1252;
    return FromWindows1252(bytes);
}

std::string EncodeIni(std::u16string_view text, IniEncoding encoding) {
    switch (encoding) {
        case IniEncoding::Utf8:
            return ToUtf8(text);
        case IniEncoding::Utf8Marked:
            return std::string(kUtf8Mark) + ToUtf8(text);
        case IniEncoding::Windows1252:
            return ToWindows1252(text);
        case IniEncoding::Utf16:
            return ToUtf16(text, false);
        case IniEncoding::Utf16Marked:
            return std::string(kUtf16Mark) + ToUtf16(text, false);
        case IniEncoding::Utf16BigEndianMarked:
            return std::string(kUtf16BigEndianMark) + ToUtf16(text, true);
    }
    return {};
}

}  // namespace roundup
