#include "utility/ownedstring.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "utility/casemap.h"

namespace roundup {

namespace {

// A block for length units and the terminator, or null.
char16_t* NewBlock(std::size_t length) noexcept {
    if (length >= std::numeric_limits<std::size_t>::max() / sizeof(char16_t)) return nullptr;
    return static_cast<char16_t*>(std::malloc((length + 1) * sizeof(char16_t)));
}

char16_t* CopyTo(char16_t* target, std::u16string_view text) noexcept {
    return std::copy(text.begin(), text.end(), target);
}

bool AssignJoined(OwnedString& target, std::u16string_view first, std::u16string_view second,
                  std::u16string_view third) noexcept {
    // The sources may be parts of the target: it lets go of its block when the new one is filled.
    OwnedString joined;
    const bool fits = second.size() <= std::numeric_limits<std::size_t>::max() - first.size() &&
                      third.size() <= std::numeric_limits<std::size_t>::max() - first.size() - second.size();
    const bool made = fits && joined.Allocate(first.size() + second.size() + third.size());
    if (made) CopyTo(CopyTo(CopyTo(joined.Data(), first), second), third);
    target = std::move(joined);
    return made;
}

}  // namespace

bool OwnedString::Assign(std::u16string_view text) noexcept {
    char16_t* const block = NewBlock(text.size());
    if (block != nullptr) *CopyTo(block, text) = u'\0';
    Free(std::exchange(m_text, block));
    m_length = block != nullptr ? text.size() : 0;
    return block != nullptr;
}

bool OwnedString::Allocate(std::size_t length) noexcept {
    char16_t* const block = NewBlock(length);
    if (block != nullptr) std::fill_n(block, length + 1, u'\0');
    Free(std::exchange(m_text, block));
    m_length = block != nullptr ? length : 0;
    return block != nullptr;
}

void OwnedString::Truncate(std::size_t length) noexcept {
    if (length >= m_length) return;
    m_length = length;
    m_text[length] = u'\0';
}

void OwnedString::Measure() noexcept {
    if (m_text != nullptr) m_length = std::u16string_view(m_text).size();
}

void OwnedString::Free(char16_t* block) noexcept { std::free(block); }

bool AssignString(OwnedString& target, TextOrNull source) noexcept {
    if (!source.IsEmpty()) return target.Assign(source.View());
    target.Reset();
    return true;
}

bool AssignConcat(OwnedString& target, TextOrNull first, TextOrNull second) noexcept {
    if (!first.IsEmpty() && !second.IsEmpty()) return AssignJoined(target, first.View(), second.View(), {});
    target.Reset();
    return true;
}

bool AssignConcat3(OwnedString& target, TextOrNull first, TextOrNull second, TextOrNull third) noexcept {
    if (!first.IsEmpty() && !second.IsEmpty() && !third.IsEmpty()) {
        return AssignJoined(target, first.View(), second.View(), third.View());
    }
    target.Reset();
    return true;
}

bool EndsWithNoCase(TextOrNull text, TextOrNull ending) noexcept {
    const std::u16string_view whole = text.View();
    const std::u16string_view end = ending.View();
    if (whole.empty() || end.empty() || end.size() > whole.size()) return false;
    return EqualsNoCase(whole.substr(whole.size() - end.size()), end);
}

bool ContainsNoCase(TextOrNull text, TextOrNull part) noexcept {
    const std::u16string_view whole = text.View();
    const std::u16string_view piece = part.View();
    if (whole.empty() || piece.empty() || piece.size() > whole.size()) return false;
    const auto same = [](char16_t a, char16_t b) { return a == b || ToUpper(a) == ToUpper(b); };
    return std::search(whole.begin(), whole.end(), piece.begin(), piece.end(), same) != whole.end();
}

void CopyBounded(char16_t* target, TextOrNull source, std::size_t size) noexcept {
    if (size == 0) return;
    const std::u16string_view text = source.View();
    std::size_t length = std::min(text.size(), size - 1);
    const bool splits = length != 0 && length < text.size() && (text[length - 1] & 0xFC00) == 0xD800 &&
                        (text[length] & 0xFC00) == 0xDC00;
    if (splits) --length;
    std::copy_n(text.data(), length, target);
    target[length] = u'\0';
}

}  // namespace roundup
