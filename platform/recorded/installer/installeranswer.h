// How the installer's functions hand out a text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/win32.h"

namespace roundup {

// Copies what fits with its terminator. length: in, characters of room; out, those of the whole text without the
// terminator. Error 234 when the text was cut. Without a buffer the length alone is told.
inline Win32Error AnswerInstallerText(std::u16string_view text, char16_t* buffer, std::uint32_t& length) noexcept {
    const std::uint32_t room = length;
    length = static_cast<std::uint32_t>(text.size());
    if (buffer == nullptr) return kErrorSuccess;
    if (room > 0) {
        const std::size_t fitting = std::min<std::size_t>(room - 1, text.size());
        std::copy_n(text.data(), fitting, buffer);
        buffer[fitting] = u'\0';
    }
    return text.size() < room ? kErrorSuccess : kErrorMoreData;
}

}  // namespace roundup
