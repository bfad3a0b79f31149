#include "utility/ininumber.h"

#include <string_view>

#include "platform/machine.h"
#include "utility/fixedtext.h"

namespace roundup {

namespace {

std::uint32_t DigitOf(char16_t c) noexcept {
    if (c >= u'0' && c <= u'9') return static_cast<std::uint32_t>(c - u'0');
    if (c >= u'a' && c <= u'f') return static_cast<std::uint32_t>(c - u'a' + 10);
    if (c >= u'A' && c <= u'F') return static_cast<std::uint32_t>(c - u'A' + 10);
    return 0xFFFFFFFFU;
}

// Takes the prefix that names a base off the text.
std::uint32_t TakeBase(std::u16string_view& text) noexcept {
    if (text.size() < 2 || text[0] != u'0') return 10;
    const std::uint32_t base = text[1] == u'x' ? 16 : text[1] == u'o' ? 8 : text[1] == u'b' ? 2 : 10;
    if (base != 10) text.remove_prefix(2);
    return base;
}

}  // namespace

std::uint32_t ReadIniNumber(const char16_t* section, const char16_t* key, std::uint32_t fallback,
                            const char16_t* path) {
    // The platform's own buffer for the value.
    FixedText<30> value;
    CurrentMachine().Profile().GetString(section, key, u"", value.Data(), FixedText<30>::Size(), path);
    std::u16string_view text = value;
    if (text.empty()) return fallback;
    while (!text.empty() && text.front() <= u' ') text.remove_prefix(1);
    const bool minus = !text.empty() && text.front() == u'-';
    if (!text.empty() && (minus || text.front() == u'+')) text.remove_prefix(1);
    const std::uint32_t base = TakeBase(text);
    std::uint32_t number = 0;
    for (; !text.empty() && DigitOf(text.front()) < base; text.remove_prefix(1)) {
        number = number * base + DigitOf(text.front());
    }
    return minus ? 0U - number : number;
}

}  // namespace roundup
