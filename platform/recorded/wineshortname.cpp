#include "platform/recorded/wineshortname.h"

#include <algorithm>
#include <cstdint>

#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::size_t kKept = 4;  // characters of the long name that the short one begins with
constexpr std::size_t kTilde = kKept;
constexpr std::size_t kStemLength = 8;
constexpr std::size_t kExtensionLength = 3;

bool IsDosCharacter(char16_t c) {
    return c > u' ' && c < 0x7F && std::u16string_view(u"*?<>|\"+=,;[]:/\\").find(c) == std::u16string_view::npos;
}

std::size_t DotOfExtension(std::u16string_view name) {
    // A dot at either end begins no extension.
    if (name.size() < 3) return std::u16string_view::npos;
    const std::size_t dot = name.rfind(u'.', name.size() - 2);
    return dot == 0 ? std::u16string_view::npos : dot;
}

bool IsDosName(std::u16string_view name) {
    const std::size_t dot = std::min(name.find(u'.'), name.size());
    const std::u16string_view extension = name.substr(std::min(dot + 1, name.size()));
    return dot >= 1 && dot <= kStemLength && extension.size() <= kExtensionLength &&
           extension.find(u'.') == std::u16string_view::npos && !name.ends_with(u'.') &&
           std::all_of(name.begin(), name.end(), IsDosCharacter);
}

// Wine has the plain lower case of Unicode: a letter that is small already stays what it is, where the system's own
// mapping makes one of all those that share a capital, such as the two forms of sigma.
char16_t PlainLower(char16_t c) {
    constexpr std::u16string_view kTitleCase = u"\x01C5\x01C8\x01CB\x01F2";
    const bool small = ToUpper(c) != c && kTitleCase.find(c) == std::u16string_view::npos;
    return small ? c : ToLower(c);
}

// Each character with the next one above it is mixed into a sum of 16 bits.
std::uint16_t HashOf(std::u16string_view name) {
    std::uint16_t hash = 0xBEEF;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const unsigned next = i + 1 < name.size() ? PlainLower(name[i + 1]) : 0U;
        const unsigned turned = static_cast<unsigned>(hash << 3) ^ static_cast<unsigned>(hash >> 5);
        hash = static_cast<std::uint16_t>(turned ^ PlainLower(name[i]) ^ (next << 8));
    }
    return hash;
}

char16_t ShortCharacter(char16_t c) { return IsDosCharacter(c) && c != u'~' && c != u'.' ? ToUpper(c) : u'_'; }

}  // namespace

std::u16string WineShortName(std::u16string_view name) {
    constexpr std::u16string_view kDigits = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ012345";
    if (name.empty() || IsDosName(name)) return {};
    const std::size_t dot = DotOfExtension(name);
    std::u16string result;
    for (const char16_t c : name.substr(0, std::min(dot, kKept))) result.push_back(ShortCharacter(c));
    result.resize(kTilde + 1, u'~');
    const std::uint16_t hash = HashOf(name);
    for (const int shift : {10, 5, 0}) result.push_back(kDigits[(hash >> shift) & 0x1FU]);
    if (dot == std::u16string_view::npos) return result;
    result.push_back(u'.');
    for (const char16_t c : name.substr(dot + 1, kExtensionLength)) result.push_back(ShortCharacter(c));
    return result;
}

bool LooksLikeWineShortName(std::u16string_view name) noexcept {
    return name.size() >= kStemLength && name[kTilde] == u'~' &&
           (name.size() == kStemLength || name[kStemLength] == u'.');
}

}  // namespace roundup
