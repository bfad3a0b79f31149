// What formattext.h is made of: the arguments of a format, and the check of a literal against their types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "utility/ownedstring.h"

namespace roundup::formattext_detail {

enum class Kind : std::uint8_t { None, Unsupported, Signed, Unsigned, Character, Wide, Narrow, Pointer };

// An element of an array or behind a pointer without const.
template <class T>
using ElementOf = std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>;

template <class T>
consteval Kind KindOf() {
    using D = std::decay_t<T>;
    if constexpr (std::is_pointer_v<D>) {
        if constexpr (std::is_same_v<ElementOf<T>, char16_t>) return Kind::Wide;
        if constexpr (std::is_same_v<ElementOf<T>, char>) return Kind::Narrow;
        if constexpr (std::is_object_v<ElementOf<T>> || std::is_void_v<ElementOf<T>>) return Kind::Pointer;
        return Kind::Unsupported;
    } else if constexpr (std::is_same_v<D, char16_t> || std::is_same_v<D, char>) {
        return Kind::Character;
    } else if constexpr (std::is_same_v<D, bool>) {
        return Kind::Unsigned;
    } else if constexpr (std::is_same_v<D, wchar_t> || std::is_same_v<D, char8_t> || std::is_same_v<D, char32_t>) {
        return Kind::Unsupported;
    } else if constexpr (std::is_integral_v<D>) {
        return std::is_signed_v<D> ? Kind::Signed : Kind::Unsigned;
    } else if constexpr (std::is_convertible_v<const T&, std::u16string_view>) {
        return Kind::Wide;
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
        return Kind::Narrow;
    } else {
        return Kind::Unsupported;
    }
}

// One argument, which must outlive the call. Texts end at their first zero, as with printf, or at the end of their
// view or array, whichever comes first.
class Argument {
  public:
    constexpr Argument() noexcept = default;
    template <class T>
    explicit constexpr Argument(const T& value) noexcept : m_kind(KindOf<T>()) {
        constexpr Kind kind = KindOf<T>();
        static_assert(kind != Kind::Unsupported, "a format takes no argument of this type");
        if constexpr (std::is_array_v<T> && (kind == Kind::Wide || kind == Kind::Narrow)) {
            m_text = value;
            m_length = std::extent_v<T>;
        } else if constexpr (std::is_pointer_v<std::decay_t<T>>) {
            m_text = value;
            m_length = std::u16string_view::npos;
        } else if constexpr (kind == Kind::Wide) {
            if constexpr (std::is_same_v<T, OwnedString>) {
                if (value.IsNull()) {
                    m_length = std::u16string_view::npos;
                    return;
                }
            }
            const std::u16string_view view = value;
            m_text = view.data();
            m_length = view.size();
        } else if constexpr (kind == Kind::Narrow) {
            const std::string_view view = value;
            m_text = view.data();
            m_length = view.size();
        } else if constexpr (std::is_same_v<T, char>) {
            m_number = static_cast<unsigned char>(value);
        } else {
            // Signed values extend to 64 bits; the conversion cuts them to its own size.
            m_number = static_cast<std::uint64_t>(value);
        }
    }

    Kind GetKind() const noexcept { return m_kind; }
    std::uint64_t Number() const noexcept { return m_number; }
    const void* Address() const noexcept { return m_text; }
    const char16_t* Wide() const noexcept { return static_cast<const char16_t*>(m_text); }
    const char* Narrow() const noexcept { return static_cast<const char*>(m_text); }
    // The most units that may be read, terminator included.
    std::size_t Length() const noexcept { return m_length; }

  private:
    const void* m_text = nullptr;
    std::uint64_t m_number = 0;
    std::size_t m_length = 0;
    Kind m_kind = Kind::None;
};

enum class Size : std::uint8_t { Byte, Short, Int, Long64 };

// One conversion of a format, from behind its percent sign.
struct Conversion {
    bool left = false;
    bool zero = false;
    bool alternate = false;
    bool plus = false;
    bool blank = false;
    bool starWidth = false;
    bool starPrecision = false;
    bool hasPrecision = false;
    bool hasSize = false;
    bool wellFormed = false;
    Size size = Size::Int;
    char16_t type = 0;
    std::uint32_t width = 0;
    std::uint32_t precision = 0;
    std::size_t next = 0;  // position behind the conversion
};

inline constexpr std::uint32_t kMaxLiteralWidth = 9999;

class ConversionParser {
  public:
    constexpr ConversionParser(std::u16string_view format, std::size_t position) noexcept
        : m_format(format), m_position(position) {}

    constexpr Conversion Parse() noexcept {
        Conversion made;
        while (TakeFlag(made)) {
        }
        made.starWidth = Take(u"*");
        if (!made.starWidth) made.width = TakeNumber();
        made.hasPrecision = Take(u".");
        if (made.hasPrecision) {
            made.starPrecision = Take(u"*");
            if (!made.starPrecision) made.precision = TakeNumber();
        }
        made.hasSize = TakeSize(made.size);
        if (m_position < m_format.size()) {
            made.type = m_format[m_position++];
            made.wellFormed = made.width <= kMaxLiteralWidth && made.precision <= kMaxLiteralWidth;
        }
        made.next = m_position;
        return made;
    }

  private:
    constexpr bool Take(std::u16string_view word) noexcept {
        if (m_format.substr(m_position, word.size()) != word) return false;
        m_position += word.size();
        return true;
    }
    constexpr bool TakeFlag(Conversion& made) noexcept {
        if (Take(u"-")) return made.left = true;
        if (Take(u"0")) return made.zero = true;
        if (Take(u"#")) return made.alternate = true;
        if (Take(u"+")) return made.plus = true;
        if (Take(u" ")) return made.blank = true;
        return false;
    }
    constexpr std::uint32_t TakeNumber() noexcept {
        std::uint32_t number = 0;
        while (m_position < m_format.size() && m_format[m_position] >= u'0' && m_format[m_position] <= u'9') {
            if (number <= kMaxLiteralWidth) number = number * 10 + (m_format[m_position] - u'0');
            ++m_position;
        }
        return number;
    }
    // A long has 32 bits, as on Windows.
    constexpr bool TakeSize(Size& size) noexcept {
        if (Take(u"I64") || Take(u"ll")) {
            size = Size::Long64;
        } else if (Take(u"hh")) {
            size = Size::Byte;
        } else if (Take(u"h")) {
            size = Size::Short;
        } else if (!Take(u"I32") && !Take(u"l")) {
            return false;
        }
        return true;
    }

    std::u16string_view m_format;
    std::size_t m_position;
};

// What the check needs to know of an argument.
struct ArgumentType {
    Kind kind;
    std::size_t size;
};

// Never defined: a call of one of these while the program is compiled is the error message.
void TheFormatHasAnUnknownConversion();
void TheFormatHasMoreConversionsThanArguments();
void TheFormatHasFewerConversionsThanArguments();
void TheArgumentDoesNotFitItsConversion();

class FormatCheck {
  public:
    consteval FormatCheck(std::u16string_view format, const ArgumentType* types, std::size_t count)
        : m_types(types), m_count(count) {
        for (std::size_t at = 0; at < format.size();) {
            if (format[at] == u'\0') TheFormatHasAnUnknownConversion();
            if (format[at++] != u'%') continue;
            const Conversion conversion = ConversionParser(format, at).Parse();
            if (!conversion.wellFormed) TheFormatHasAnUnknownConversion();
            Check(conversion, at);
            at = conversion.next;
        }
        if (m_next != m_count) TheFormatHasFewerConversionsThanArguments();
    }

  private:
    consteval ArgumentType Next() {
        if (m_next >= m_count) TheFormatHasMoreConversionsThanArguments();
        return m_types[m_next++];
    }
    static consteval bool IsNumber(ArgumentType type, std::size_t limit) {
        return (type.kind == Kind::Signed || type.kind == Kind::Unsigned || type.kind == Kind::Character) &&
               type.size <= limit;
    }
    consteval void NextMustBeNumber(std::size_t limit) {
        if (!IsNumber(Next(), limit)) TheArgumentDoesNotFitItsConversion();
    }
    consteval void NextMustBe(Kind kind) {
        if (Next().kind != kind) TheArgumentDoesNotFitItsConversion();
    }
    consteval void Check(const Conversion& c, std::size_t start) {
        if (c.type == u'%') {
            if (c.next != start + 1) TheFormatHasAnUnknownConversion();
            return;
        }
        if (c.starWidth) NextMustBeNumber(4);
        if (c.starPrecision) NextMustBeNumber(4);
        const bool numeric = std::u16string_view(u"diuxX").find(c.type) != std::u16string_view::npos;
        const bool signedOnly = c.plus || c.blank;
        if (numeric) {
            if (signedOnly && c.type != u'd' && c.type != u'i') TheFormatHasAnUnknownConversion();
            if (c.alternate && c.type != u'x' && c.type != u'X') TheFormatHasAnUnknownConversion();
            NextMustBeNumber(c.size == Size::Long64 ? 8 : 4);
            return;
        }
        if (c.hasSize || c.zero || c.alternate || signedOnly) TheFormatHasAnUnknownConversion();
        switch (c.type) {
            case u's':
                return NextMustBe(Kind::Wide);
            case u'S':
                return NextMustBe(Kind::Narrow);
            case u'c':
                return NextMustBe(Kind::Character);
            case u'p':
                return NextMustBe(Kind::Pointer);
            default:
                TheFormatHasAnUnknownConversion();
        }
    }

    const ArgumentType* m_types;
    std::size_t m_count;
    std::size_t m_next = 0;
};

// A literal whose conversions fit arguments of the types Args, in their order.
template <class... Args>
class Checked {
  public:
    template <std::size_t N>
    consteval Checked(const char16_t (&literal)[N])  // NOLINT(google-explicit-constructor)
        : m_text(literal, N - 1) {
        const ArgumentType types[] = {{KindOf<Args>(), sizeof(std::decay_t<Args>)}..., {Kind::None, 0}};
        FormatCheck(m_text, types, sizeof...(Args));
    }
    constexpr std::u16string_view Text() const noexcept { return m_text; }

  private:
    std::u16string_view m_text;
};

// Units that the formatted text takes, without a terminator.
std::size_t Measure(std::u16string_view format, const Argument* list, std::size_t count) noexcept;
// Throws std::bad_alloc.
std::u16string ToString(std::u16string_view format, const Argument* list, std::size_t count);
// Writes at most size units, terminator included. True when all of it fitted.
bool ToArray(char16_t* target, std::size_t size, std::u16string_view format, const Argument* list,
             std::size_t count) noexcept;

}  // namespace roundup::formattext_detail
