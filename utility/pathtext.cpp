#include "utility/pathtext.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"

namespace roundup {

namespace {

constexpr std::size_t kPathSize = 520;
// No path of the platform is longer, so a longer text need not be asked for.
constexpr std::size_t kLongestPath = 32767;
// A text that is longer than the paths of the system is asked for so many times: a hostile one brings thousands of
// cuts, each of which costs a walk over all of it.
constexpr int kLongTries = 16;

// Takes a quoted text out of its quotes, together with whatever stands behind them; answers the length.
std::size_t Unquote(char16_t* text) {
    const std::u16string_view view = text;
    if (view.front() != u'"') return view.size();
    const std::size_t length = std::min(view.find(u'"', 1), view.size()) - 1;
    std::copy_n(text + 1, length, text);
    text[length] = u'\0';
    return length;
}

// Leaves one backslash of every run.
std::size_t CollapseBackslashes(char16_t* text, std::size_t length) {
    const auto doubled = [](char16_t a, char16_t b) { return a == u'\\' && b == u'\\'; };
    char16_t* end = std::unique(text, text + length, doubled);
    *end = u'\0';
    return static_cast<std::size_t>(end - text);
}

// Cuts the text at a "/" and takes the blanks in front of it away; the first character stays, blank or not.
std::size_t CutSwitch(char16_t* text, std::size_t slash) {
    std::size_t length = slash;
    while (length > 1 && text[length - 1] == u' ') --length;
    text[length] = u'\0';
    return length;
}

std::size_t DropSwitches(char16_t* text, std::size_t length) {
    int longTries = kLongTries;
    for (;;) {
        const std::size_t slash = std::u16string_view(text, length).rfind(u'/');
        if (slash == std::u16string_view::npos) return length;
        const bool asks = length < kPathSize || (length <= kLongestPath && longTries-- > 0);
        if (!asks || !PathExists(text)) {
            length = CutSwitch(text, slash);
            continue;
        }
        // The platform takes "/" for "\": what exists with some of them exists with none, so this settles the rest.
        std::replace(text, text + length, u'/', u'\\');
        return CollapseBackslashes(text, length);
    }
}

std::uint32_t SeamSize(std::size_t size) { return static_cast<std::uint32_t>(std::min<std::size_t>(size, UINT32_MAX)); }

using PathForm = std::uint32_t (IFileSystem::*)(const char16_t*, char16_t*, std::uint32_t);

std::size_t GetPathForm(PathForm form, const char16_t* source, char16_t* target, std::size_t size, bool* found) {
    if (found != nullptr) *found = false;
    if (size == 0) return 0;
    target[0] = u'\0';
    if (source == nullptr) return 0;
    const std::uint32_t length = (CurrentMachine().Files().*form)(source, target, SeamSize(size));
    if (length != 0 && length < size && target[0] != u'\0') {
        if (found != nullptr) *found = true;
        return length;
    }
    const std::u16string_view text = source;
    if (text.size() >= size) return 0;
    CopyBounded(target, text, size);
    return text.size();
}

}  // namespace

// Nearly every path is clean, so this looks at all of it without a branch, many characters at a time.
bool IsCleanPath(std::u16string_view path) noexcept {
    if (path.empty() || path.front() == u'"' || path.back() == u'\\') return false;
    char16_t found = 0;
    const auto mark = [&found](bool is) { found = static_cast<char16_t>(found | static_cast<char16_t>(is)); };
    const char16_t* const text = path.data();
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        mark((text[i] == u'\0') | (text[i] == u'/') | ((text[i] == u'\\') & (text[i + 1] == u'\\')));
    }
    mark(path.back() == u'\0' || path.back() == u'/');
    return found == 0;
}

std::size_t CleanPath(char16_t* text) {
    if (text == nullptr || text[0] == u'\0') return 0;
    std::size_t length = Unquote(text);
    length = CollapseBackslashes(text, length);
    length = DropSwitches(text, length);
    if (length != 0 && text[length - 1] == u'\\') text[--length] = u'\0';
    return length;
}

void CleanPath(OwnedString& text) {
    if (!text.IsEmpty() && !IsCleanPath(text)) text.Truncate(CleanPath(text.Data()));
}

void ExpandPath(OwnedString& path) {
    OwnedString cleaned;
    const char16_t* text = path.Get();
    std::size_t length = path.Length();
    if (!IsCleanPath(path)) {
        if (!cleaned.Assign(path)) return;
        length = CleanPath(cleaned.Data());
        text = cleaned.Get();
    }
    // Behind the cleaning the limit holds: the long form has nowhere to go, and a cut one names another file.
    if (length == 0 || length >= kPathSize) return;

    char16_t expanded[kPathSize];
    if (text[0] == u'%') {
        ExpandEnvText(text, expanded, kPathSize);
        text = expanded;
    }
    char16_t longPath[kPathSize];
    const std::u16string_view form(longPath, GetLongPath(text, longPath, kPathSize));
    // Most paths are as they should be already.
    if (form.empty() || EqualsExactly(path, form)) return;
    OwnedString result;
    if (AssignString(result, form)) path = std::move(result);
}

void ExpandEnvText(const char16_t* source, char16_t* target, std::size_t size) {
    if (size == 0) return;
    target[0] = u'\0';
    if (source == nullptr) return;
    const std::uint32_t needed = CurrentMachine().System().ExpandEnvironment(source, target, SeamSize(size));
    if (needed == 0 || needed > size || target[0] == u'\0') CopyBounded(target, source, size);
}

std::size_t GetLongPath(const char16_t* source, char16_t* target, std::size_t size, bool* found) {
    return GetPathForm(&IFileSystem::GetLongPath, source, target, size, found);
}

std::size_t GetShortPath(const char16_t* source, char16_t* target, std::size_t size) {
    return GetPathForm(&IFileSystem::GetShortPath, source, target, size, nullptr);
}

}  // namespace roundup
