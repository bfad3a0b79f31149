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

bool AssignString(OwnedString& target, std::u16string_view source) noexcept {
    if (!source.empty()) return target.Assign(source);
    target.Reset();
    return true;
}

bool AssignConcat(OwnedString& target, std::u16string_view first, std::u16string_view second) noexcept {
    if (!first.empty() && !second.empty()) return AssignJoined(target, first, second, {});
    target.Reset();
    return true;
}

bool AssignConcat3(OwnedString& target, std::u16string_view first, std::u16string_view second,
                   std::u16string_view third) noexcept {
    if (!first.empty() && !second.empty() && !third.empty()) return AssignJoined(target, first, second, third);
    target.Reset();
    return true;
}

bool EndsWithNoCase(std::u16string_view text, std::u16string_view ending) noexcept {
    if (text.empty() || ending.empty() || ending.size() > text.size()) return false;
    return EqualsNoCase(text.substr(text.size() - ending.size()), ending);
}

bool ContainsNoCase(std::u16string_view text, std::u16string_view part) noexcept {
    if (text.empty() || part.empty() || part.size() > text.size()) return false;
    const auto same = [](char16_t a, char16_t b) { return a == b || ToUpper(a) == ToUpper(b); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

void CopyBounded(char16_t* target, std::u16string_view source, std::size_t size) noexcept {
    if (size == 0) return;
    std::size_t length = std::min(source.size(), size - 1);
    const bool splits = length != 0 && length < source.size() && (source[length - 1] & 0xFC00) == 0xD800 &&
                        (source[length] & 0xFC00) == 0xDC00;
    if (splits) --length;
    std::copy_n(source.data(), length, target);
    target[length] = u'\0';
}

}  // namespace roundup
