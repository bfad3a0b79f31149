// The owned string: one heap block of zero-terminated UTF-16 held by one owner.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

namespace roundup {

// Tells null (no block) from empty (a block that holds the terminator alone). The length is kept, so a text may hold
// zeros inside, as the values of several strings do. Allocation never throws: a text that could not be had is null.
class OwnedString {
  public:
    OwnedString() noexcept = default;
    // A copy of the text, not null even when the text is empty; null when memory is short.
    explicit OwnedString(std::u16string_view text) noexcept { (void)Assign(text); }
    OwnedString(OwnedString&& other) noexcept
        : m_text(std::exchange(other.m_text, nullptr)), m_length(std::exchange(other.m_length, 0)) {}
    OwnedString& operator=(OwnedString&& other) noexcept {
        std::swap(m_text, other.m_text);
        std::swap(m_length, other.m_length);
        return *this;
    }
    OwnedString(const OwnedString&) = delete;
    OwnedString& operator=(const OwnedString&) = delete;
    ~OwnedString() { Free(m_text); }

    // Replaces the content by a copy of text, which may be part of the content; empty gives an empty text, not null.
    // False, and the string null, when memory is short.
    [[nodiscard]] bool Assign(std::u16string_view text) noexcept;
    // Replaces the content by a block of length characters, all zero, to be written through Data().
    [[nodiscard]] bool Allocate(std::size_t length) noexcept;
    void Reset() noexcept { Free(std::exchange(m_text, nullptr)), m_length = 0; }
    // Cuts the text to length characters; a longer length changes nothing.
    void Truncate(std::size_t length) noexcept;
    // Sets the length anew after Data() was written to: that of the text up to its first zero.
    void Measure() noexcept;

    bool IsNull() const noexcept { return m_text == nullptr; }
    // Null or without a character: the two count as the same thing nearly everywhere.
    bool IsEmpty() const noexcept { return m_length == 0; }
    std::size_t Length() const noexcept { return m_length; }
    // The text, or null.
    const char16_t* Get() const noexcept { return m_text; }
    // The text, zero-terminated, never null.
    const char16_t* Text() const noexcept { return m_text != nullptr ? m_text : u""; }
    std::u16string_view View() const noexcept { return {Text(), m_length}; }
    operator std::u16string_view() const noexcept { return View(); }  // NOLINT(google-explicit-constructor)
    // The writable block of Length() characters and the terminator; null when the string is.
    char16_t* Data() noexcept { return m_text; }

  private:
    static void Free(char16_t* block) noexcept;

    char16_t* m_text = nullptr;
    std::size_t m_length = 0;
};

// A text that is only read, or null, where one may be: made from a pointer, an OwnedString, or anything that converts
// to a view. A plain view cannot be made from a null pointer, and many an operation answers one.
class TextOrNull {
  public:
    TextOrNull() noexcept = default;
    TextOrNull(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
    template <class T>
    requires std::is_convertible_v<const T&, std::u16string_view> TextOrNull(const T& text)
    noexcept {  // NOLINT(google-explicit-constructor)
        if constexpr (std::is_pointer_v<std::decay_t<T>>) {
            const char16_t* const pointer = text;
            m_isNull = pointer == nullptr;
            if (!m_isNull) m_view = pointer;
        } else if constexpr (std::is_same_v<T, OwnedString>) {
            m_isNull = text.IsNull();
            m_view = text;
        } else {
            m_isNull = false;
            m_view = text;
        }
    }

    bool IsNull() const noexcept { return m_isNull; }
    // Empty for null.
    std::u16string_view View() const noexcept { return m_view; }
    bool IsEmpty() const noexcept { return m_view.empty(); }

  private:
    std::u16string_view m_view;
    bool m_isNull = true;
};

// In all of these a null text counts as an empty one.

// Frees the old content and leaves it null; a source without text leaves it so. False when out of memory.
bool AssignString(OwnedString& target, TextOrNull source) noexcept;
// The same with the sources joined; the target stays null unless every source has text.
bool AssignConcat(OwnedString& target, TextOrNull first, TextOrNull second) noexcept;
bool AssignConcat3(OwnedString& target, TextOrNull first, TextOrNull second, TextOrNull third) noexcept;

// False when either text is empty.
bool EndsWithNoCase(TextOrNull text, TextOrNull ending) noexcept;
// Substring test on upper-cased characters; false when either text is empty.
bool ContainsNoCase(TextOrNull text, TextOrNull part) noexcept;

// Copies source to an array of size characters, terminator included; what does not fit is cut, never inside a
// surrogate pair. size 0 does nothing.
void CopyBounded(char16_t* target, TextOrNull source, std::size_t size) noexcept;

}  // namespace roundup
