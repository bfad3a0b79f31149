#include "appcenter/enumappx/manifesttext.h"

#include <cstdint>
#include <cstring>

namespace roundup {
namespace {

constexpr std::size_t kShortest = 3;

std::uint8_t Unit(std::span<const std::byte> bytes, std::size_t place) noexcept {
    return std::to_integer<std::uint8_t>(bytes[place]);
}

// Bytes of the sequence that begins with that byte; 0 when none does.
std::size_t SequenceLength(std::uint8_t first) noexcept {
    if (first < 0x80) return 1;
    if ((first & 0xE0) == 0xC0) return 2;
    if ((first & 0xF0) == 0xE0) return 3;
    if ((first & 0xF8) == 0xF0) return 4;
    return 0;
}

// Bytes of the whole sequence at the place; 0 when it is broken or the text ends inside it.
std::size_t WholeSequence(std::span<const std::byte> bytes, std::size_t place) noexcept {
    const std::size_t length = SequenceLength(Unit(bytes, place));
    if (length > bytes.size() - place) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((Unit(bytes, place + i) & 0xC0) != 0x80) return 0;
    }
    return length;
}

bool IsUtf8(std::span<const std::byte> bytes) noexcept {
    for (std::size_t place = 0; place < bytes.size();) {
        const std::size_t length = WholeSequence(bytes, place);
        if (length == 0) return false;
        place += length;
    }
    return true;
}

void DecodeUtf8(std::span<const std::byte> bytes, std::u16string& text) {
    text.reserve(bytes.size());
    for (std::size_t place = 0; place < bytes.size();) {
        const std::size_t length = WholeSequence(bytes, place);
        if (length == 0 || length == 4) return;
        std::uint32_t character = Unit(bytes, place) & (length == 1 ? 0x7FU : length == 2 ? 0x1FU : 0x0FU);
        for (std::size_t i = 1; i < length; ++i) character = (character << 6) | (Unit(bytes, place + i) & 0x3FU);
        text += static_cast<char16_t>(character);
        place += length;
    }
}

void DecodeUtf16(std::span<const std::byte> bytes, bool bigEndian, std::u16string& text) {
    text.resize(bytes.size() / sizeof(char16_t));
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    if (!bigEndian) return;
    for (char16_t& unit : text) unit = static_cast<char16_t>((unit >> 8) | (unit << 8));
}

}  // namespace

bool DecodeManifest(std::span<const std::byte> bytes, std::u16string& text) {
    text.clear();
    if (bytes.size() < kShortest) return false;
    const std::uint8_t first = Unit(bytes, 0);
    const std::uint8_t second = Unit(bytes, 1);
    if (first == 0xFE && second == 0xFF) {
        DecodeUtf16(bytes.subspan(2), true, text);
    } else if (first == 0xFF && second == 0xFE) {
        DecodeUtf16(bytes.subspan(2), false, text);
    } else if (first == 0xEF && second == 0xBB && Unit(bytes, 2) == 0xBF) {
        DecodeUtf8(bytes.subspan(3), text);
    } else {
        if (!IsUtf8(bytes)) return false;
        DecodeUtf8(bytes, text);
    }
    return true;
}

}  // namespace roundup
