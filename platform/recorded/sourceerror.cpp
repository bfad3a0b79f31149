#include "platform/recorded/sourceerror.h"

#include <array>
#include <charconv>

namespace roundup {

namespace {

std::string Digits(std::uint64_t number, int base) {
    std::array<char, 24> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number, base).ptr;
    std::string digits(text.data(), end);
    for (char& c : digits) {
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    }
    return digits;
}

}  // namespace

std::string SourceError::Text() const {
    switch (place) {
        case Place::Line:
            return file + ":" + Digits(position, 10) + ": " + what;
        case Place::Offset:
            return file + ": offset 0x" + Digits(position, 16) + ": " + what;
        case Place::None:
            break;
    }
    return file + ": " + what;
}

}  // namespace roundup
