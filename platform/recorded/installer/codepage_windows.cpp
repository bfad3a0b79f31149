#include <windows.h>

#include "platform/recorded/installer/codepage.h"

namespace roundup {

std::size_t DecodeByPlatform(std::uint32_t page, std::string_view text, std::u16string& target, bool& known) {
    known = IsValidCodePage(page) != FALSE;
    if (!known || text.empty() || text.size() > INT_MAX) return 0;
    const int size = static_cast<int>(text.size());
    // The platform replaces what is no character by itself, in its own way.
    const int units = MultiByteToWideChar(page, 0, text.data(), size, nullptr, 0);
    if (units <= 0) return 0;
    const std::size_t start = target.size();
    target.resize(start + static_cast<std::size_t>(units));
    MultiByteToWideChar(page, 0, text.data(), size, reinterpret_cast<wchar_t*>(target.data() + start), units);
    return text.size();
}

}  // namespace roundup
