#include "platform/recorded/winpath.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace roundup {

namespace {

bool IsSeparator(char16_t c) noexcept { return c == u'\\' || c == u'/'; }

bool IsLetter(char16_t c) noexcept { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

// "X:\" at the start of text.
bool HasDriveRoot(std::u16string_view text) noexcept {
    return text.size() >= 3 && IsLetter(text[0]) && text[1] == u':' && IsSeparator(text[2]);
}

// "\\?\" or "\\.\" with either kind of separator.
bool HasDevicePrefix(std::u16string_view text) noexcept {
    return text.size() >= 4 && IsSeparator(text[0]) && IsSeparator(text[1]) && (text[2] == u'?' || text[2] == u'.') &&
           IsSeparator(text[3]);
}

// A part that another one follows loses one period at its end; the last one all periods and blanks, unless a
// separator stands behind it.
std::u16string_view TrimPart(std::u16string_view part, bool last) noexcept {
    if (last) {
        while (!part.empty() && (part.back() == u'.' || part.back() == u' ')) part.remove_suffix(1);
        return part;
    }
    if (part.size() > 1 && part.back() == u'.' && part[part.size() - 2] != u'.') part.remove_suffix(1);
    return part;
}

// Appends the parts of rest to text, which ends in the root's separator. Answers whether rest ended in a separator.
bool AppendParts(std::u16string_view rest, std::u16string& text) {
    const std::size_t root = text.size();
    const bool endsInSeparator = rest.empty() || IsSeparator(rest.back());
    while (!rest.empty()) {
        const auto end = std::find_if(rest.begin(), rest.end(), IsSeparator);
        std::u16string_view part = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        const bool last = part.size() == rest.size();
        rest.remove_prefix(std::min(part.size() + 1, rest.size()));
        if (part == u"..") {
            const std::size_t cut = text.find_last_of(u'\\', text.size() - 2);
            text.resize(std::max(root, cut == std::u16string::npos ? 0 : cut + 1));
            continue;
        }
        part = part == u"." ? std::u16string_view() : TrimPart(part, last);
        if (!part.empty()) text.append(part).push_back(u'\\');
    }
    return endsInSeparator;
}

// The text behind "\\?\" means what it says: no "/", no "." and no "..", which then are names that nothing has.
Win32Error ParseVerbatim(std::u16string_view rest, WinPath& parsed) {
    if (!HasDriveRoot(rest) || rest[2] != u'\\') return kErrorPathNotFound;
    parsed.endsInSeparator = rest.back() == u'\\';
    if (parsed.endsInSeparator && rest.size() > 3) rest.remove_suffix(1);
    parsed.text.assign(rest);
    const std::u16string_view parts = parsed.Parts();
    if (std::any_of(parts.begin(), parts.end(), [](char16_t c) { return c != u'\\' && IsForbiddenInName(c); })) {
        return kErrorInvalidName;
    }
    return parts.find(u"\\\\") == std::u16string_view::npos ? kErrorSuccess : kErrorInvalidName;
}

// The root that a network path keeps: "\\server\share\".
std::u16string NetworkPath(std::u16string_view path) {
    std::u16string text = u"\\\\";
    path.remove_prefix(2);
    for (int part = 0; part < 2 && !path.empty(); ++part) {
        const auto end = std::find_if(path.begin(), path.end(), IsSeparator);
        text.append(path.begin(), end).push_back(u'\\');
        path.remove_prefix(std::min(static_cast<std::size_t>(end - path.begin()) + 1, path.size()));
    }
    const std::size_t root = text.size();
    if (!AppendParts(path, text) && text.size() > root) text.pop_back();
    return text;
}

}  // namespace

bool IsForbiddenInName(char16_t c) noexcept {
    // One bit for each of the first 128 characters, since every character of every path is asked for.
    static constexpr std::array<std::uint64_t, 2> kForbidden = [] {
        std::array<std::uint64_t, 2> bits{0xFFFFFFFFU, 0};
        for (const char16_t one : std::u16string_view(u"<>:\"/\\|?*")) bits[one / 64] |= std::uint64_t{1} << one % 64;
        return bits;
    }();
    return c < 128 && (kForbidden[c / 64] >> c % 64 & 1) != 0;
}

std::u16string_view TakePart(std::u16string_view& rest) noexcept {
    const std::size_t end = std::min(rest.find(u'\\'), rest.size());
    const std::u16string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

Win32Error ParsePath(std::u16string_view path, WinPath& parsed) {
    if (path.size() > kLongestPath) return kErrorInvalidName;
    if (path.starts_with(u"\\\\?\\") || path.starts_with(u"\\??\\")) return ParseVerbatim(path.substr(4), parsed);
    if (HasDevicePrefix(path)) path.remove_prefix(4);
    if (!HasDriveRoot(path)) return kErrorPathNotFound;

    parsed.text.reserve(path.size() + 1);
    parsed.text.assign(path.substr(0, 2)).push_back(u'\\');
    parsed.endsInSeparator = AppendParts(path.substr(3), parsed.text);
    if (parsed.text.size() > 3) parsed.text.pop_back();
    const std::u16string_view parts = parsed.Parts();
    const bool forbidden =
        std::any_of(parts.begin(), parts.end(), [](char16_t c) { return c != u'\\' && IsForbiddenInName(c); });
    return forbidden ? kErrorInvalidName : kErrorSuccess;
}

std::u16string FullPathText(std::u16string_view path) {
    std::u16string prefix;
    if (HasDevicePrefix(path)) {
        prefix = {u'\\', u'\\', path[2], u'\\'};
        path.remove_prefix(4);
        if (!HasDriveRoot(path)) return prefix.append(path);
    }
    if (HasDriveRoot(path)) {
        std::u16string text = prefix.append(path.substr(0, 2)).append(u"\\");
        const std::size_t root = text.size();
        if (!AppendParts(path.substr(3), text) && text.size() > root) text.pop_back();
        return text;
    }
    if (path.size() > 2 && IsSeparator(path[0]) && IsSeparator(path[1])) return NetworkPath(path);
    return {};
}

}  // namespace roundup
