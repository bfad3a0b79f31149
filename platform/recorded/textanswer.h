// How the platform's functions hand out a text.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace roundup {

// Copies text with a terminator to a buffer of size characters and answers its characters; when it does not fit, the
// size needed with the terminator, and the buffer is untouched.
inline std::uint32_t AnswerText(std::u16string_view text, char16_t* buffer, std::uint32_t size) noexcept {
    const auto length = static_cast<std::uint32_t>(text.size());
    if (length + 1 > size || buffer == nullptr) return length + 1;
    if (length != 0) std::memcpy(buffer, text.data(), length * sizeof(char16_t));
    buffer[length] = u'\0';
    return length;
}

}  // namespace roundup
