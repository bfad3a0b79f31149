#include "host/textout.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "host/terminal.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

bool SteersTerminal(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || (c >= 0x200E && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// The longest start of the text that takes at most width columns.
std::string_view Start(std::string_view text, std::size_t width) {
    std::size_t columns = 0;
    std::string_view rest = text;
    while (!rest.empty()) {
        std::string_view behind = rest;
        columns += CharacterColumns(TakeCharacter(behind));
        if (columns > width) break;
        rest = behind;
    }
    return text.substr(0, text.size() - rest.size());
}

}  // namespace

std::string Utf8(std::u16string_view text) { return ToUtf8(text); }

std::string Printable(std::u16string_view text) {
    if (std::none_of(text.begin(), text.end(), SteersTerminal)) return ToUtf8(text);
    std::u16string safe(text);
    std::replace_if(safe.begin(), safe.end(), SteersTerminal, static_cast<char16_t>(kReplacementCharacter));
    return ToUtf8(safe);
}

std::size_t Columns(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) columns += CharacterColumns(TakeCharacter(text));
    return columns;
}

std::string Cut(std::string_view text, std::size_t width) {
    if (Columns(text) <= width) return std::string(text);
    if (width == 0) return {};
    return std::string(Start(text, width - 1)) + "…";
}

std::string Fit(std::string_view text, std::size_t width, bool right) {
    std::string cut = Cut(text, width);
    const std::string fill(width - Columns(cut), ' ');
    return right ? fill + cut : cut + fill;
}

std::string ReadableSize(std::uint64_t bytes) {
    static constexpr std::array kUnits = {"B", "KB", "MB", "GB", "TB", "PB", "EB"};
    std::array<char, 32> text{};
    if (bytes < 1024) {
        std::snprintf(text.data(), text.size(), "%u B", static_cast<unsigned>(bytes));
        return text.data();
    }
    double amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    // 999.5 and more would round to four digits: those are shown in the next unit.
    while (amount >= 999.5 && unit + 1 < kUnits.size()) {
        amount /= 1024;
        ++unit;
    }
    const int decimals = amount < 9.995 ? 2 : amount < 99.95 ? 1 : 0;
    std::snprintf(text.data(), text.size(), "%.*f %s", decimals, amount, kUnits[unit]);
    return text.data();
}

std::string ReadableDate(std::u16string_view date) {
    const bool digits =
        date.size() == 8 && std::all_of(date.begin(), date.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
    std::string text = Printable(date);
    if (!digits || text.substr(4, 2) < "01" || text.substr(4, 2) > "12") return text;
    if (text.substr(6, 2) < "01" || text.substr(6, 2) > "31") return text;
    return text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2);
}

bool WriteOut(std::string_view text) { return std::fwrite(text.data(), 1, text.size(), stdout) == text.size(); }

}  // namespace roundup::host
