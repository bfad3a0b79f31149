#include "platform/codepagetext.h"

#include <windows.h>

#include <climits>

namespace roundup {

bool DecodeByPlatform(std::uint32_t page, std::string_view text, std::u16string& target) {
    if (IsValidCodePage(page) == FALSE || text.size() > INT_MAX) return false;
    const int size = static_cast<int>(text.size());
    // The platform replaces what is no character by itself, in its own way.
    target.resize(text.size());  // no page has a byte that is worth more than one unit
    const int units = MultiByteToWideChar(page, 0, text.data(), size, reinterpret_cast<wchar_t*>(target.data()), size);
    target.resize(static_cast<std::size_t>(units > 0 ? units : 0));
    return true;
}

}  // namespace roundup
